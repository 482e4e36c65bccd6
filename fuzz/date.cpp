// Any text as a date, and any four bytes as a save value: what is accepted keeps its save forms.
#include <kestrel/foundation/KSString.h>
#include <kestrel/time/KSDate.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

void checkSaveForms(const KSDate& date) {
    if (date == KSDate()) return;  // outside 32 bits
    require(date.getSeconds() % 86400 == 0);
    KSDate again;
    require(again.setFromSaveVal(date.getSaveVal()) == date.getSeconds());
    KSString text;
    require(date.saveString(&text));
    const std::unique_ptr<char, decltype(&std::free)> chars(text.createCStr(), &std::free);
    KSDate loaded;
    require(loaded.loadString(chars.get()) && loaded == date);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    KSDate date;
    if (date.loadString(std::string(reinterpret_cast<const char*>(data), size).c_str())) {
        checkSaveForms(date);
    } else {
        require(date == KSDate());
    }
    std::uint32_t value = 0;
    if (size >= sizeof value) std::memcpy(&value, data, sizeof value);
    date.setFromSaveVal(value);
    checkSaveForms(date);
    return 0;
}
