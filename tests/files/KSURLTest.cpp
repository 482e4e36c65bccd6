#include <kestrel/files/KSURL.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace {

std::string utf8(const KSString& string) {
    const std::unique_ptr<char, decltype(&std::free)> text(string.createUTF8Str(), &std::free);
    return text ? text.get() : "(null)";
}

/// Everything a URL answers, in one line a question.
struct Answers {
    std::string url, path, folder, name, shortName, extension, colons;
    bool operator==(const Answers&) const = default;
};

Answers ask(const KSURL& url) {
    return {
        utf8(url.getAsURLString()), utf8(url.getAsFileSystemString()), utf8(url.getPathAsFileSystemString()),
        utf8(url.getFilename()),    utf8(url.getShortFilename()),      utf8(url.getExtension()),
        utf8(url.getAsHFSString())};
}

void PrintTo(const Answers& a, std::ostream* out) {
    for (const auto& text : {a.url, a.path, a.folder, a.name, a.shortName, a.extension, a.colons})
        *out << '\n' << text;
}

std::string bytesOf(const KSURL& url) {
    unsigned int length = 0;
    const std::unique_ptr<char[]> bytes(url.getString(&length));
    if (!bytes) return "(null)";
    EXPECT_EQ(bytes[length], '\0');
    return {bytes.get(), length};
}

}  // namespace

TEST(KSURL, AnswersAboutPathsAndURLTexts) {
    const struct {
        const char* text;
        bool isDirectory;
        Answers answers;
    } rows[] = {
        {"/Users/a/b.mov",
         false,
         {"file:///Users/a/b.mov", "/Users/a/b.mov", "/Users/a", "b.mov", "b", "mov", "Users:a:b.mov"}},
        {"http://localhost/dir/x.mov",
         false,
         {"http://localhost/dir/x.mov", "/dir/x.mov", "/dir", "x.mov", "x", "mov", "dir:x.mov"}},
        {"http://localhost/x.mov?a=/b.c#/d",
         false,
         {"http://localhost/x.mov?a=/b.c#/d", "/x.mov", "/", "x.mov", "x", "mov", "x.mov"}},
        {"http://localhost", false, {"http://localhost", "", "/", "", "", "(null)", ""}},
        {"/Users/two words",
         true,
         {"file:///Users/two%20words/", "/Users/two words", "/Users", "two words", "two words", "(null)",
          "Users:two words"}},
        {"/a/b.dir/", false, {"file:///a/b.dir/", "/a/b.dir", "/a", "b.dir", "b", "dir", "a:b.dir"}},
        {"/", false, {"file:///", "/", "/", "/", "/", "(null)", ""}},
        {"name.tar.gz",
         false,
         {"name.tar.gz", "name.tar.gz", ".", "name.tar.gz", "name.tar", "gz", ":name.tar.gz"}},
        {"a:b/../c", false, {"a%3Ab/../c", "a:b/../c", "a:b/..", "c", "c", "(null)", ":a/b::c"}},
        {"/x/.hidden",
         false,
         {"file:///x/.hidden", "/x/.hidden", "/x", ".hidden", ".hidden", "(null)", "x:.hidden"}},
        {"/x/dot.", false, {"file:///x/dot.", "/x/dot.", "/x", "dot.", "dot.", "(null)", "x:dot."}},
        {"/100%/#1?.exr",
         false,
         {"file:///100%25/%231%3F.exr", "/100%/#1?.exr", "/100%", "#1?.exr", "#1?", "exr", "100%:#1?.exr"}},
        {"/e\x8e",
         false,
         {"file:///e%C3%A9", "/e\xC3\xA9", "/", "e\xC3\xA9", "e\xC3\xA9", "(null)", "e\xC3\xA9"}},
    };
    for (const auto& row : rows) {
        const KSURL url(KSString(row.text), row.isDirectory);
        EXPECT_EQ(ask(url), row.answers) << row.text;
        EXPECT_EQ(ask(KSURL(url)), row.answers) << "copy of " << row.text;  // through the URL's text
        EXPECT_EQ(utf8(url.getContainingFolder()), row.answers.folder);
    }
}

TEST(KSURL, BytePathsAreNeverURLTexts) {
    EXPECT_EQ(utf8(KSURL("http://localhost/x", false).getAsFileSystemString()), "http://localhost/x");
    EXPECT_EQ(utf8(KSURL("http://localhost/x", false).getAsURLString()), "http%3A//localhost/x");
    EXPECT_EQ(utf8(KSURL("/shot.tif", 1, 250).getAsFileSystemString()), "/shot.tif:1:250");
    EXPECT_EQ(utf8(KSURL("s", 0xFFFFFFFF, 0x80000000).getAsFileSystemString()), "s:-1:-2147483648");
}

TEST(KSURL, FilesAreTheURLsOfThisMachineAndRelativePaths) {
    const struct {
        const char* text;
        bool isFile;
    } rows[] = {{"file:///a", true},
                {"FILE:///a", true},
                {"File://LocalHost/a", true},
                {"file://elsewhere/a", false},
                {"http://localhost/a", false},
                {"files:///a", false},
                {"//a://b", false},
                {"a/b://c", true}};
    for (const auto& row : rows) {
        UInt8 bytes[16];
        const KSURL url(KSString(row.text), false);
        ASSERT_FALSE(url.empty()) << row.text;
        EXPECT_EQ(CFURLGetFileSystemRepresentation(url.cf_url(), true, bytes, sizeof bytes), row.isFile)
            << row.text;
    }
}

TEST(KSURL, AnyBytesSurviveTheCopyThroughText) {
    std::string every = "/";
    for (int byte = 1; byte < 256; ++byte) every += static_cast<char>(byte);
    const KSURL url(every.c_str(), false);
    const KSURL copy(url);
    UInt8 bytes[1024];
    ASSERT_TRUE(CFURLGetFileSystemRepresentation(copy.cf_url(), true, bytes, sizeof bytes));
    EXPECT_EQ(reinterpret_cast<char*>(bytes), every);
    EXPECT_FALSE(
        CFURLGetFileSystemRepresentation(copy.cf_url(), true, bytes, static_cast<CFIndex>(every.size())));
    EXPECT_EQ(utf8(KSURL("/a\xFFz\xC3", false).getAsFileSystemString()), "/a\xEF\xBF\xBDz\xEF\xBF\xBD");
}

TEST(KSURL, WhatIsNoURLLeavesTheObjectEmpty) {
    const char* const texts[] = {"",        "http://local host/", "http://a/b c", "file:///a%2",
                                 "x://%zz", "http://a/#one#two",  "a\"://b",      "http://a/\x8e"};
    for (const char* text : texts) {
        const KSURL url(KSString(text), false);
        EXPECT_TRUE(url.empty()) << text;
        EXPECT_EQ(ask(url), (Answers{"(null)", "(null)", "(null)", "(null)", "(null)", "(null)", "(null)"}))
            << text;
        unsigned int length = 77;
        EXPECT_EQ(url.getString(&length), nullptr);
        EXPECT_EQ(length, 77u);
        EXPECT_FALSE(url.getFSRef(nullptr));
        EXPECT_FALSE(url.getFSSpec(nullptr));
        EXPECT_TRUE(KSURL(url).empty());
    }
    EXPECT_TRUE(KSURL(static_cast<const char*>(nullptr), false).empty());
    EXPECT_TRUE(KSURL(static_cast<const char*>(nullptr), 1, 2).empty());
    EXPECT_TRUE(KSURL(KSString(), false).empty());
}

TEST(KSURL, CopiesAreIndependentAndSelfAssignmentChangesNothing) {
    KSURL a(KSString("/one"), false);
    KSURL b(KSString("/two"), false);
    const CFURLRef object = a.cf_url();
    a = *&a;
    EXPECT_EQ(a.cf_url(), object);
    KSURL copy = a;
    EXPECT_NE(copy.cf_url(), object);
    a = b;
    EXPECT_EQ(utf8(a.getFilename()), "two");
    EXPECT_EQ(utf8(copy.getFilename()), "one");
    a = KSURL();
    EXPECT_TRUE(a.empty());
    const KSURL shared(copy.cf_url());
    EXPECT_EQ(shared.cf_url(), copy.cf_url());
}

TEST(KSURL, BytesOfTheWholePath) {
    EXPECT_EQ(bytesOf(KSURL(KSString("/a b/c"), false)), "/a b/c");
    EXPECT_EQ(bytesOf(KSURL(KSString("a"), true)), "a/");
    EXPECT_EQ(bytesOf(KSURL(KSString("."), true)), "./");
    EXPECT_EQ(bytesOf(KSURL(KSString("/folder"), true)), "/folder/");  // a folder keeps its slash
    EXPECT_EQ(bytesOf(KSURL("/", true)), "/");
    EXPECT_EQ(bytesOf(KSURL("/\xC3\xA9\xE2\x82\xAC\xE3\x81\x82\xF0\x9F\x8E\xAC|\xFF", false)),
              "/\x8e\xdb??|?");
    EXPECT_EQ(bytesOf(KSURL(std::string(100000, 'x').c_str(), false)), std::string(100000, 'x'));
}

TEST(KSURL, AColonInAFirstSegmentOfAnyLengthIsEscaped) {
    const std::string colons(1 << 20, ':');
    const std::string path = colons + ".mov/x:y";
    const KSURL url(path.c_str(), false);
    EXPECT_EQ(bytesOf(url), path);
    const std::string text = utf8(url.getAsURLString());
    EXPECT_EQ(text.size(), 3 * colons.size() + 8);
    EXPECT_TRUE(text.starts_with("%3A%3A"));
    EXPECT_TRUE(text.ends_with("%3A.mov/x:y"));
    EXPECT_EQ(utf8(KSURL((colons + ".mov").c_str(), false).getShortFilename()), colons);
}
