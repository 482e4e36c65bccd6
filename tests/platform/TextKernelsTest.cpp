// The vector kernels of text against their plain twins, on every target of this machine.
#include <kestrel/platform/detail/FindUnits.h>
#include <kestrel/platform/detail/MacRoman.h>
#include <kestrel/platform/detail/Utf8.h>

#include <gtest/gtest.h>
#include <hwy/targets.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace kestrel::detail;

namespace {

using Units = std::vector<UniChar>;

void onEveryTarget(const std::function<void()>& check) {
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        std::printf("target %s\n", hwy::TargetName(target));
        check();
        if (testing::Test::HasFatalFailure()) break;
    }
    hwy::SetSupportedTargetsForTest(0);
}

/// Text whose characters need one byte of UTF-8, mostly one, all lengths, or that is full of surrogates.
Units randomUnits(std::mt19937& random, std::size_t count, unsigned kind) {
    Units units(count);
    for (UniChar& unit : units) {
        const auto bits = static_cast<unsigned>(random());
        switch (kind) {
            case 0:
                unit = bits % 0x80;
                break;
            case 1:
                unit = static_cast<UniChar>(bits % 16 ? bits >> 8 & 0x7F : bits >> 8);
                break;
            case 2:
                unit = static_cast<UniChar>((bits >> 8) >> (bits % 16));
                break;
            default:
                unit = static_cast<UniChar>(bits % 4 ? 0xD800 + (bits >> 8) % 0x800 : bits >> 8);
                break;
        }
    }
    return units;
}

}  // namespace

TEST(TextKernels, EncodingUtf8EqualsTheReference) {
    onEveryTarget([] {
        std::mt19937 random(8);
        for (unsigned kind = 0; kind < 4; ++kind)
            for (std::size_t count = 0; count <= 150; ++count)
                for (std::size_t shift = 0; shift < 4; ++shift) {
                    const Units units = randomUnits(random, count + shift, kind);
                    const std::span text = std::span(units).subspan(shift);
                    std::string want(3 * count + 8, '#'), got = want;
                    const std::size_t size = utf8FromUtf16Reference(text, want.data() + shift);
                    ASSERT_EQ(utf8FromUtf16(text, got.data() + shift), size)
                        << kind << ' ' << count << ' ' << shift;
                    ASSERT_EQ(got.substr(0, shift + size), want.substr(0, shift + size))
                        << kind << ' ' << count;
                    ASSERT_EQ(got.substr(shift + 3 * count), want.substr(shift + 3 * count))
                        << "beyond the room";
                }
    });
}

TEST(TextKernels, DecodingUtf8EqualsTheReferenceAlsoWhereItIsMalformed) {
    onEveryTarget([] {
        std::mt19937 random(16);
        for (unsigned kind = 0; kind < 4; ++kind)
            for (std::size_t count = 0; count <= 150; ++count)
                for (int damage = 0; damage < 4; ++damage) {
                    std::string bytes = utf8Of(randomUnits(random, count, kind));
                    for (int i = 0; i < damage && !bytes.empty(); ++i) {
                        const std::size_t at = random() % bytes.size();
                        if (random() % 2)
                            bytes.erase(at, 1);
                        else
                            bytes[at] = static_cast<char>(random());
                    }
                    const Units blank(bytes.size() + 8, 0x2323);
                    Units want = blank, got = blank;
                    const std::size_t size = utf16FromUtf8Reference(bytes, want.data());
                    ASSERT_EQ(utf16FromUtf8(bytes, got.data()), size) << kind << ' ' << count;
                    if (size == invalidText) continue;
                    ASSERT_TRUE(std::equal(got.begin(), got.begin() + static_cast<long>(size), want.begin()));
                    ASSERT_TRUE(std::equal(got.end() - 8, got.end(), blank.end() - 8)) << "beyond the room";
                }
    });
}

TEST(TextKernels, EveryCharacterAndEveryShortSequenceOfBytes) {
    for (unsigned character = 0; character < 0x110000; ++character) {
        Units units{static_cast<UniChar>(character)};
        if (character >= 0x10000)
            units = {static_cast<UniChar>(0xD7C0 + (character >> 10)),
                     static_cast<UniChar>(0xDC00 | (character & 0x3FF))};
        const bool isSurrogate = character >= 0xD800 && character < 0xE000;
        const std::string utf8 = utf8Of(units);
        Units back(4);
        const std::size_t count = utf16FromUtf8(utf8, back.data());
        ASSERT_EQ(utf8.size(), character < 0x80      ? 1u
                               : character < 0x800   ? 2u
                               : character < 0x10000 ? 3u
                                                     : 4u);
        back.resize(count);
        ASSERT_EQ(back, isSurrogate ? Units{0xFFFD} : units) << character;
    }
    Units want(4), got(4);
    for (unsigned word = 0; word < 1u << 24; ++word) {
        const char bytes[] = {static_cast<char>(word), static_cast<char>(word >> 8),
                              static_cast<char>(word >> 16)};
        const std::size_t count = utf16FromUtf8Reference(bytes, want.data());
        ASSERT_EQ(utf16FromUtf8(bytes, got.data()), count) << word;
    }
}

TEST(TextKernels, MalformedUtf8IsRefused) {
    struct Row {
        const char* name;
        std::string bytes;
    };
    for (const Row& row :
         {Row{"lone trail", "\x80"}, Row{"overlong slash", "\xC0\xAF"},
          Row{"overlong in three", "\xE0\x80\xAF"}, Row{"overlong in four", "\xF0\x80\x80\xAF"},
          Row{"surrogate", "\xED\xA0\x80"}, Row{"beyond Unicode", "\xF4\x90\x80\x80"},
          Row{"five bytes", "\xF8\x88\x80\x80\x80"}, Row{"cut short", "abc\xE2\x82"},
          Row{"cut at a letter", "\xE2\x82z"}, Row{"FF", "\xFF"}}) {
        Units units(row.bytes.size() + 40);
        EXPECT_EQ(utf16FromUtf8(row.bytes, units.data()), invalidText) << row.name;
        const std::string within = std::string(30, 'a') + row.bytes;
        units.resize(within.size());
        EXPECT_EQ(utf16FromUtf8(within, units.data()), invalidText) << row.name << " after a vector of ASCII";
    }
}

TEST(TextKernels, FindingEqualsTheReference) {
    onEveryTarget([] {
        std::mt19937 random(4);
        for (std::size_t size = 0; size <= 90; ++size)
            for (std::size_t wanted = 0; wanted <= 6; ++wanted)
                for (int round = 0; round < 12; ++round) {
                    // Two letters only: there are many candidates, and several occurrences.
                    Units text(size), what(wanted);
                    for (UniChar& unit : text) unit = static_cast<UniChar>('a' + random() % (round % 3 + 1u));
                    for (UniChar& unit : what) unit = static_cast<UniChar>('a' + random() % (round % 3 + 1u));
                    const std::size_t expected = findUnitsReference(text, what);
                    ASSERT_EQ(findUnits(text, what), expected) << size << ' ' << wanted;
                    ASSERT_EQ(findUnitsLinear(text, what), expected) << size << ' ' << wanted;
                }
        // At every place, with nothing readable behind the text.
        for (std::size_t size = 1; size <= 70; ++size)
            for (std::size_t at = 0; at < size; ++at) {
                Units text(size, 'x');
                text[at] = 0xFFFF;
                ASSERT_EQ(findUnits(text, Units{0xFFFF}), at);
            }
    });
}

TEST(TextKernels, AHostileTextIsSearchedInLinearTime) {
    // Every position is a candidate that fails in the middle: comparing each in full would take 10^10 steps.
    const std::size_t size = 400'000;
    const Units text(size, 'a');
    Units what(size / 2, 'a');
    what[size / 4] = 'b';
    EXPECT_EQ(findUnits(text, what), notFound);
    Units found = text;
    std::copy(what.begin(), what.end(), found.end() - static_cast<long>(what.size()));
    EXPECT_EQ(findUnits(found, what), size - what.size());
}

TEST(MacRoman, TheTableIsTheOneOfIcuBothWays) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open("macos-0_2-10.2", &status);  // the form with the euro sign
    ASSERT_TRUE(U_SUCCESS(status));
    ucnv_setFallback(converter, false);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    for (int byte = 0; byte < 256; ++byte) {
        const auto mine = static_cast<std::uint8_t>(byte);
        const char theirs = static_cast<char>(byte);
        UniChar unit = 0;
        utf16FromMacRoman(&mine, 1, &unit);
        UChar expected[4];
        status = U_ZERO_ERROR;
        ucnv_toUChars(converter, expected, 4, &theirs, 1, &status);
        EXPECT_EQ(unit, expected[0]) << byte;
    }
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const UniChar mine = static_cast<UniChar>(unit);
        const UChar theirs = static_cast<UChar>(unit);
        std::uint8_t byte = 0;
        const bool isHeld = macRomanFromUtf16(&mine, 1, &byte) == 1;
        char expected[8];
        status = U_ZERO_ERROR;
        const bool isExpected =
            ucnv_fromUChars(converter, expected, 8, &theirs, 1, &status) == 1 && U_SUCCESS(status);
        ASSERT_EQ(isHeld, isExpected) << unit;
        if (isHeld) {
            ASSERT_EQ(byte, static_cast<std::uint8_t>(expected[0])) << unit;
        }
    }
    ucnv_close(converter);
}

TEST(MacRoman, TextIsConvertedLikeItsCharactersUpToTheFirstThatCannotBeHeld) {
    const Units letters{'a', 'b', 'c', 0xE4, 0x20AC, 0, 0xFB01, 0xF8FF, 0x0100, 0x65E5};
    std::mt19937 random(1998);
    for (std::size_t size = 0; size <= 150; ++size)
        for (std::size_t kinds = 1; kinds <= letters.size(); ++kinds) {
            Units units(size), back(size + 1, '#');
            for (UniChar& unit : units)  // those behind the fifth are rare
                unit = letters[random() % (random() % 16 ? std::min<std::size_t>(kinds, 5) : kinds)];
            std::vector<std::uint8_t> want(size), got(size + 1, '#');
            std::size_t held = 0;
            while (held < size && macRomanFromUtf16(&units[held], 1, &want[held])) ++held;
            ASSERT_EQ(macRomanFromUtf16(units.data(), size, got.data()), held) << size << ' ' << kinds;
            ASSERT_TRUE(std::equal(want.begin(), want.begin() + static_cast<long>(held), got.begin()));
            ASSERT_EQ(got[size], '#');
            utf16FromMacRoman(got.data(), held, back.data());
            ASSERT_TRUE(std::equal(units.begin(), units.begin() + static_cast<long>(held), back.begin()));
            ASSERT_EQ(back[held], '#');
        }
}
