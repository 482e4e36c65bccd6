#include <kestrel/foundation/KSString.h>
#include <kestrel/serialization/KSException.h>
#include <kestrel/serialization/KSStream.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// Keeps each write apart.
class RecordingStream : public KSStream {
public:
    unsigned long long read(void*, unsigned long long) override { return 0; }
    unsigned long long write(const void* bytes, unsigned long long length) override {
        writes.emplace_back(static_cast<const char*>(bytes), length);
        return 0;  // ignored by the text operations
    }
    KSString getError() const override { return KSString(); }

    std::vector<std::string> writes;
};

using Writes = std::vector<std::string>;

}  // namespace

TEST(KSStream, IndentWritesFortyBlanksAtATime) {
    const struct {
        unsigned int level;
        std::vector<std::size_t> sizes;
    } rows[] = {{0, {0}},       {1, {2}},          {20, {40}},        {21, {40, 2}},
                {40, {40, 40}}, {41, {40, 40, 2}}, {45, {40, 40, 10}}};
    for (const auto& row : rows) {
        RecordingStream stream;
        EXPECT_EQ(&stream.indent(row.level), &stream);
        Writes expected;
        for (const std::size_t size : row.sizes) expected.emplace_back(size, ' ');
        EXPECT_EQ(stream.writes, expected) << row.level;
    }
}

TEST(KSStream, TextsAreWrittenWholeAndEmptyOnesNotAtAll) {
    RecordingStream stream;
    stream << "" << static_cast<const char*>(nullptr) << KSString() << KSString("") << "x"
           << "long text" << KSString("\x8e\xdb");  // Mac Roman: e acute, euro
    EXPECT_EQ(stream.writes, (Writes{"x", "long text", "\xC3\xA9\xE2\x82\xAC"}));
}

TEST(KSException, ClassesFormOneFamily) {
    try {
        throw KSException_AttributeUndefined();
    } catch (const KSException_WriteError&) {
        FAIL();
    } catch (const KSException& exception) {
        EXPECT_NE(dynamic_cast<const std::exception*>(&exception), nullptr);
    }
}
