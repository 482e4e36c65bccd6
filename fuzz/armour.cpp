// Any bytes as an armoured text, read in pieces: never more than its whole groups hold, and what is read
// comes back from a text of its own.
#include <kestrel/files/KSAsciiStream.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

std::vector<std::uint8_t> readAll(KSAsciiStream& stream, std::size_t piece) {
    std::vector<std::uint8_t> all;
    std::vector<std::uint8_t> part(piece);
    while (const auto count = stream.read(part.data(), part.size()))
        all.insert(all.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(count));
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::size_t piece = std::size_t{1} + data[0];
    const std::vector<char> text(data + 1, data + size);
    KSAsciiStream in;
    const bool opened = in.open(text.data(), text.size());
    const auto bytes = readAll(in, piece);
    require(opened || bytes.empty());
    require(!opened || bytes.size() <= (text.size() - 12) / 4 * 3);

    KSAsciiStream out;
    for (std::size_t at = 0; at < bytes.size(); at += piece)
        out.write(bytes.data() + at, std::min(piece, bytes.size() - at));
    out.close();
    char* const written = out.getString().createCStr();
    KSAsciiStream again;
    require(again.open(written) == !bytes.empty());
    require(readAll(again, 1000) == bytes);
    std::free(written);
    return 0;
}
