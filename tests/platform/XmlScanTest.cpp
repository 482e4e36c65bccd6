#include <kestrel/platform/detail/XmlScan.h>

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cctype>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace kestrel::detail;

namespace {

TEST(XmlScan, ReferenceKnowsEveryByte) {
    for (int c = 0; c < 256; ++c) {
        const char byte = static_cast<char>(c);
        XmlMasks masks;
        classifyXmlReference(&byte, 1, masks);
        EXPECT_EQ(masks.markup[0], std::strchr("<&]", byte) && c != 0 ? 1u : 0u) << c;
        EXPECT_EQ(masks.quotes[0], std::strchr("<&\"'", byte) && c != 0 ? 1u : 0u) << c;
        EXPECT_EQ(masks.nameEnds[0],
                  c >= 0x80 || !(std::isalnum(c) || std::strchr(":_-.", byte)) || c == 0 ? 1u : 0u)
            << c;
        EXPECT_EQ(masks.suspects[0], c >= 0x80 || (c < 0x20 && c != 9 && c != 10 && c != 13) ? 1u : 0u) << c;
    }
}

/// Lets the best target be chosen again, also when a test ends early.
struct ChosenTarget {
    ~ChosenTarget() { hwy::SetSupportedTargetsForTest(0); }
};

TEST(XmlScan, EveryTargetEqualsTheReference) {
    const ChosenTarget restored;
    std::mt19937 random(1998);
    const std::string_view likely = "<&]\"'\t\n\r -.:_=/@[`{09AZaz\x1F\x7F\x80\xFF";
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        std::printf("target %s\n", hwy::TargetName(target));
        for (std::size_t size = 0; size <= 200; ++size)
            for (std::size_t shift = 0; shift < 16; ++shift) {
                // The exact size on the heap: a read beyond it shows under the address sanitizer.
                std::vector<char> bytes(shift + size);
                for (char& byte : bytes)
                    byte = random() % 2 ? likely[random() % likely.size()] : static_cast<char>(random());
                XmlMasks want, got;
                std::memset(&want, 0x5A, sizeof want);
                std::memset(&got, 0x5A, sizeof got);
                classifyXmlReference(bytes.data() + shift, size, want);
                classifyXml(bytes.data() + shift, size, got);
                ASSERT_EQ(want.markup, got.markup) << hwy::TargetName(target) << ' ' << size << ' ' << shift;
                ASSERT_EQ(want.quotes, got.quotes) << hwy::TargetName(target) << ' ' << size << ' ' << shift;
                ASSERT_EQ(want.nameEnds, got.nameEnds)
                    << hwy::TargetName(target) << ' ' << size << ' ' << shift;
                ASSERT_EQ(want.suspects, got.suspects)
                    << hwy::TargetName(target) << ' ' << size << ' ' << shift;
            }
    }
}

// Against searches that know nothing of windows, on documents that span several.
TEST(XmlScan, ScannerFindsAcrossWindows) {
    std::mt19937 random(2008);
    for (int round = 0; round < 20; ++round) {
        std::string document(3 * XmlMasks::windowBytes + random() % 100, 'x');
        for (int i = 0; i < 40; ++i) document[random() % document.size()] = "<&]\"'"[random() % 5];
        XmlScanner markup(document), quotes(document);
        const char* const end = document.data() + document.size();
        for (std::size_t place = 0;;) {
            const std::size_t want = std::min(document.find_first_of("<&]", place), document.size());
            const char* got = markup.findMarkup(document.data() + place);
            ASSERT_EQ(static_cast<std::size_t>(got - document.data()), want);
            if (got == end) break;
            place = want + 1;
        }
        for (std::size_t place = 0; place <= document.size(); place += 1 + random() % 500) {
            const std::size_t want = std::min(document.find_first_of("<&\"'", place), document.size());
            ASSERT_EQ(quotes.findQuote(document.data() + place), document.data() + want);
            place = want;
        }
    }
}

TEST(XmlScan, CharactersAcrossWindowEdgesAreWhole) {
    const std::string euro = "\xE2\x82\xAC";
    for (std::size_t before = XmlMasks::windowBytes - 4; before <= XmlMasks::windowBytes + 1; ++before) {
        const std::string good = std::string(before, 'x') + euro + std::string(100, 'y');
        EXPECT_EQ(XmlScanner(good).findInvalid(good.data() + good.size()), nullptr) << before;
        std::string bad = good;
        bad[before + 2] = 'z';
        XmlScanner scanner(bad);
        EXPECT_EQ(scanner.findInvalid(bad.data() + before), nullptr) << "not before it is reached";
        EXPECT_EQ(scanner.findInvalid(bad.data() + bad.size()), bad.data() + before);
        EXPECT_EQ(scanner.findInvalid(bad.data() + before + 1), bad.data() + before) << "a fault stays";
    }
}

}  // namespace
