#include <kestrel/files/detail/Armour.h>

#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

using namespace kestrel::detail;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Runs check on every vector target of this machine.
template <class Check>
void onEveryTarget(Check check) {
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        std::printf("target %s\n", hwy::TargetName(target));
        check(hwy::TargetName(target));
    }
    hwy::SetSupportedTargetsForTest(0);
}

Bytes randomBytes(std::size_t count, std::uint32_t seed) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    for (auto& b : bytes) b = static_cast<std::uint8_t>(random());
    return bytes;
}

char* text(Bytes& bytes, std::size_t at) { return reinterpret_cast<char*>(bytes.data() + at); }

}  // namespace

TEST(Armour, TheReferenceFollowsTheBitsOfTheGroup) {
    const std::uint8_t bytes[] = {0x00, 0x10, 0x83, 0xFF, 0xFF, 0xFF, 0x2A, 0x00, 0x80};
    char characters[13] = {};
    encodeArmourReference(bytes, 3, characters);
    EXPECT_STREQ(characters, "*-01zzzz8U0*" /* 0 1 2 3, 63 x 4, 10 32 2 0 */);
}

TEST(Armour, EveryTargetEqualsTheReferenceAtEveryLengthAndStart) {
    onEveryTarget([](const char* target) {
        for (std::size_t groups = 0; groups <= 70; ++groups) {
            for (std::size_t shift = 0; shift < 17; ++shift) {
                const auto seed = static_cast<std::uint32_t>(groups * 17 + shift);
                const Bytes payload = randomBytes(groups * 3 + 32, seed);
                Bytes want(groups * 4 + 64, 0xAA), got = want;  // whole buffers, so that a stray write shows
                encodeArmourReference(&payload[shift], groups, text(want, shift));
                encodeArmour(&payload[shift], groups, text(got, shift));
                ASSERT_EQ(got, want) << target << " encodes " << groups << " groups at " << shift;

                // Mostly good characters, since random bytes are mostly foreign.
                Bytes characters = randomBytes(groups * 4 + 32, seed + 1);
                for (std::size_t i = 0; i < characters.size(); ++i)
                    if (i % 5) characters[i] = static_cast<std::uint8_t>(encodeVals[characters[i] % 64]);
                Bytes wantBytes(groups * 3 + 64, 0xAA), gotBytes = wantBytes;
                decodeArmourReference(text(characters, shift), groups, &wantBytes[shift]);
                decodeArmour(text(characters, shift), groups, &gotBytes[shift]);
                ASSERT_EQ(gotBytes, wantBytes) << target << " decodes " << groups << " groups at " << shift;
            }
        }
    });
}

TEST(Armour, EveryTargetKnowsEveryValueAndEveryByteInEveryPlace) {
    onEveryTarget([](const char* target) {
        for (std::size_t place = 0; place < 4; ++place) {
            Bytes characters(256 * 4, '*');
            for (std::size_t c = 0; c < 256; ++c) characters[c * 4 + place] = static_cast<std::uint8_t>(c);
            Bytes want(256 * 3), got = want;
            decodeArmourReference(text(characters, 0), 256, want.data());
            decodeArmour(text(characters, 0), 256, got.data());
            ASSERT_EQ(got, want) << target << " place " << place;
        }
        // All pairs of bytes pass through all four places of a group.
        Bytes payload(65536 * 3);
        for (std::size_t i = 0; i < 65536; ++i) {
            payload[i * 3] = static_cast<std::uint8_t>(i);
            payload[i * 3 + 1] = static_cast<std::uint8_t>(i >> 8);
            payload[i * 3 + 2] = static_cast<std::uint8_t>(i);
        }
        Bytes want(65536 * 4), got = want, back(payload.size());
        encodeArmourReference(payload.data(), 65536, text(want, 0));
        encodeArmour(payload.data(), 65536, text(got, 0));
        ASSERT_EQ(got, want) << target;
        decodeArmour(text(got, 0), 65536, back.data());
        ASSERT_EQ(back, payload) << target;
    });
}
