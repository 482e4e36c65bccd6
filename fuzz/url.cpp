// Any bytes as a path, as a URL text and as a numbered sequence: every answer is made, copies answer alike,
// and a member of a sequence is a URL that can be read again.
#include <kestrel/files/KSURL.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

std::string textOf(const KSString& string) {
    const std::unique_ptr<char, decltype(&std::free)> text(string.createUTF8Str(), &std::free);
    return text ? text.get() : "";
}

void ask(const KSURL& url, unsigned int index) {
    url.getAsFileSystemString();
    url.getPathAsFileSystemString();
    url.getFilename();
    url.getShortFilename();
    url.getExtension();
    url.getAsHFSString();
    const KSURL copy(url);
    require(textOf(copy.getAsURLString()) == textOf(url.getAsURLString()));
    require(copy.empty() == url.empty());

    url.getSequenceLength();
    const KSURL member = url.getURLforIndex(index);
    if (!url.isSequence()) require(member.empty());
    if (!member.empty()) require(!KSURL(member).empty());
    unsigned int length = 0;
    const std::unique_ptr<char[]> path(url.getString(&length));
    require(url.empty() == !path);
    if (!path) return;
    std::vector<char> exact(path.get(), path.get() + length);  // nothing behind it that could be read
    require(url.getSequenceStart(exact.data(), length) == url.getSequenceStart());
    require(url.getSequenceEnd(exact.data(), length) == url.getSequenceEnd());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const unsigned int index = data[0];
    const bool isDirectory = data[1] & 1;
    const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
    ask(KSURL(text.c_str(), isDirectory), index);
    ask(KSURL(KSString(text.c_str()), isDirectory), index);
    ask(KSURL(KSString(("file:///" + text).c_str()), isDirectory), index);
    ask(KSURL(text.c_str(), index, 2 * index), index);
    return 0;
}
