// kestrel render, as a user runs it, on real documents and image files.
#include "CommandFolder.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

constexpr const char* identifiers[] = {"11111111111111111111111111111111",
                                       "22222222222222222222222222222222"};

/// A layer from line 7 of the document on; body is what it holds.
std::string layer(const std::string& body, const std::string& attributes = "blend=\"0\" opacity=\"1\"",
                  const std::string& range = "in=\"0\" out=\"100\"") {
    static int count = 0;
    char identifier[33];
    std::snprintf(identifier, sizeof identifier, "%032d", ++count);
    return "<layer name=\"L\" identifier=\"" + std::string(identifier) + "\" " + attributes + ' ' + range +
           '>' + body + "</layer>\n";
}

std::string project(const std::string& layers, const std::string& shape = "width=\"48\" height=\"32\"",
                    int duration = 4) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE zuxmlscene>\n<zuml version=\"2.1\">\n"
           "<project version=\"1\" name=\"P\" identifier=\"" +
           std::string(identifiers[0]) + "\">\n<composition name=\"C\" identifier=\"" + identifiers[1] +
           "\" " + shape + " start=\"0\" duration=\"" + std::to_string(duration) +
           "\">\n<timecode>25 FPS</timecode>\n" + layers + "</composition>\n</project>\n</zuml>\n";
}

const std::string solid = "<solid c0=\"0.2\" c1=\"0.5\" c2=\"0.8\" alpha=\"1\">RGB</solid>";
const std::string fade =
    "<keyframes count=\"2\"><parameter>opacity</parameter><values>0 0.1 99 1</values></keyframes>";

class RenderCommand : public CommandFolder {
protected:
    void put(const std::string& name, const std::string& text) const {
        std::ofstream(folder + '/' + name, std::ios::binary) << text;
    }
    bool exists(const std::string& name) const { return fs::exists(folder + '/' + name); }
    /// Two files that are there hold the same bytes.
    bool same(const std::string& a, const std::string& b) const {
        return !file(a).empty() && file(a) == file(b);
    }
};

std::string source(const std::string& text) { return "<source>" + text + "</source>"; }

std::string transform(const std::string& position, const std::string& scale,
                      const std::string& rotation = "0") {
    return "<transform aspect=\"1\"><position>" + position + " 0</position><rotation>0 0 " + rotation +
           "</rotation><scale>" + scale + " 1</scale><shear>0 0</shear><pivot>0 0 0</pivot></transform>";
}

}  // namespace

TEST_F(RenderCommand, SourcesComeThroughAsTheyAre) {
    ASSERT_EQ(run("frames test 's.[@].png' --frames 1-3 --size 48x32 --depth 16"), 0) << output;
    ASSERT_EQ(run("frames convert 's.[@].png' 'o.[@].png' --depth 8 --opaque"), 0) << output;
    for (const char* crop : {"moved.png --crop -5,3,48x32", "window.png --crop 10,4,20x18"})
        ASSERT_EQ(run(std::string("frames convert o.1.png ") + crop), 0) << output;
    ASSERT_EQ(run("frames convert o.1.png large.png --size 144x96"), 0) << output;
    const struct {
        const char *body, *shape, *arguments, *expected;
    } rows[] = {
        {"<source>o.1.png</source>", "width=\"48\" height=\"32\"", "--frames 0", "o.1.png"},
        {"<source>o.[@].png</source>", "width=\"48\" height=\"32\"", "--frames 2 --jobs 3", "o.3.png"},
        {"<source>o.[@].png:2:3</source>", "width=\"48\" height=\"32\"", "--frames 3", "o.3.png"},
        {"<source>s.[@].png</source><alpha>ignore</alpha>", "width=\"48\" height=\"32\"", "--frames 1",
         "o.2.png"},
        {"<source>o.1.png</source>", "width=\"48\" height=\"32\"", "--frames 0 --samples 3", "o.1.png"},
        {"<source>large.png</source>", "width=\"144\" height=\"96\"", "--frames 0 --proxy 3", "o.1.png"},
    };
    for (const auto& row : rows) {
        put("p.xml", project(layer(row.body), row.shape));
        ASSERT_EQ(run(std::string("render p.xml out.png ") + row.arguments), 0) << output;
        EXPECT_TRUE(same("out.png", row.expected)) << row.body << ' ' << row.arguments;
    }
    put("p.xml", project(layer(source("o.1.png") + transform("5 -3", "1 1"))));
    ASSERT_EQ(run("render p.xml out.png --frames 0"), 0) << output;
    EXPECT_TRUE(same("out.png", "moved.png"));
    put("p.xml",
        project(layer(source("large.png") + transform("-10 -4", "0.33333333333333333 0.33333333333333333")),
                "width=\"20\" height=\"18\""));
    ASSERT_EQ(run("render p.xml out.png --frames 0"), 0) << output;
    EXPECT_TRUE(same("out.png", "window.png"));
    put("p.xml", project(layer(source("o.1.png") + transform("48 32", "1 1", "3.14159265358979"))));
    ASSERT_EQ(run("render p.xml turned.png --frames 0"), 0) << output;
    put("q.xml", project(layer(source("turned.png") + transform("48 32", "1 1", "3.14159265358979"))));
    ASSERT_EQ(run("render q.xml back.png --frames 0"), 0) << output;
    EXPECT_TRUE(same("back.png", "o.1.png"));
    EXPECT_FALSE(same("turned.png", "o.1.png"));

    // The hue of frame 1 comes out a little below 0, which must not become 360 by rounding.
    const std::string turning =
        "<solid c0=\"0\" c1=\"1\" c2=\"1\" alpha=\"1\">HSV</solid><keyframes count=\"2\">"
        "<parameter>color.c0</parameter><values>0 -10 3 20</values></keyframes>";
    const std::string red = "<solid c0=\"1\" c1=\"0\" c2=\"0\" alpha=\"1\">RGB</solid>";
    put("p.xml", project(layer(turning)));
    put("q.xml", project(layer(red)));
    ASSERT_EQ(run("render p.xml turning.exr --depth float --frames 1"), 0) << output;
    ASSERT_EQ(run("render q.xml red.exr --depth float --frames 1"), 0) << output;
    EXPECT_TRUE(same("turning.exr", "red.exr"));

    std::string early =
        project(layer(source("o.[@].png"), "blend=\"0\" opacity=\"1\"", "in=\"-2\" out=\"2\""));
    put("p.xml", early.replace(early.find("start=\"0\""), 9, "start=\"-2\""));
    EXPECT_EQ(run("render p.xml n.[@].png"), 1);
    EXPECT_THAT(output, HasSubstr("no file can have the number -2"));
    ASSERT_EQ(run("render p.xml n.[@].png:1:4"), 0) << output;
    EXPECT_TRUE(same("n.1.png", "o.1.png") && same("n.3.png", "o.3.png"));
}

TEST_F(RenderCommand, BadProjectsFailBeforeTheFirstFrame) {
    ASSERT_EQ(run("frames test 's.[@].png' --frames 1-5 --size 16x16"), 0);
    fs::remove(folder + "/s.3.png");
    fs::create_symlink("p.xml", folder + "/link.png");
    put("bad.png", "no picture");
    const std::string keys =
        "<keyframes count=\"1\"><parameter>size</parameter><values>0 1</values></keyframes>";
    const struct {
        const char* name;
        std::string document, arguments, message;
    } rows[] = {
        {"MissingFile", project(layer(source("none.png"))), "",
         "p.xml:7: layer \"L\": none.png: no such file"},
        {"NoPicture", project(layer(source("bad.png"))), "", "p.xml:7: layer \"L\": bad.png: "},
        {"NoSequence", project(layer(source("none.[##].png"))), "",
         "p.xml:7: layer \"L\": none.[##].png: no frames"},
        {"MissingMember", project(layer(source("s.[@].png")), "width=\"16\" height=\"16\"", 5), "",
         "p.xml:7: layer \"L\": s.3.png: no such file"},
        {"Remote", project(layer(source("http://host/a.png"))), "",
         "p.xml:7: layer \"L\": http://host/a.png: no file"},
        {"Itself", project(layer(source("link.png"))), "",
         "p.xml:7: layer \"L\": link.png: the project names itself"},
        {"IsOutput", project(layer(source("s.[@].png"))), "s.[@].png", "s.1.png: would overwrite a source"},
        {"IsUnusedMember", project(layer(source("s.[@].png:2:5"))), "s.[@].png --frames 2 --missing hold",
         "s.2.png: would overwrite a source"},
        {"IsSheet", project(layer(solid) + layer(source("s.1.png"))), "out.[#].png --sheet ./s.1.png",
         "s.1.png: would overwrite a source"},
        {"SheetIsFrame", project(layer(solid)), "out.[#].png --sheet out.2.png",
         "out.2.png: would overwrite"},
        {"SheetFormat", project(layer(solid)), "out.[#].png --sheet sheet.txt", "sheet.txt: no image format"},
        {"IsThumbnail", project(layer(source("s.1.png"))), "--thumbnail s.1.png --frames 0",
         "s.1.png: would overwrite a source"},
        {"Unknown", project(layer(solid, "blend=\"7\" opacity=\"1\"")), "",
         "p.xml:7: layer: there is no blend mode 7"},
        {"NoFormula", project(layer(solid, "blend=\"34\" opacity=\"1\"")), "",
         "p.xml:7: layer \"L\": blend mode \"Pass Through\" has no formula"},
        {"Singular", project("\n" + layer(solid + transform("0 0", "0 1"))), "",
         "p.xml:8: layer \"L\": its transform cannot be inverted"},
        {"Empty", project(layer(solid), "width=\"8\" height=\"8\"", 0), "",
         "p.xml:5: composition: its range of frames is empty"},
        {"Outside", project(layer(solid)), "out.[#].png --frames 50-60", "p.xml: no frames in that range"},
        {"Endless", project(layer(solid), "width=\"8\" height=\"8\"", 2000000000), "",
         "p.xml: 2000000000 frames at once"},
        {"Parameter", project(layer(solid + keys)), "",
         "p.xml:7: keyframes: there is no parameter \"size\", only"},
        {"Sources", project(layer(solid + source("s.1.png"))), "",
         "p.xml:7: layer \"L\": more than one of source"},
        {"Composition", project(layer(solid)), "out.[#].png --composition X",
         "there is no composition \"X\""},
        {"Malformed", project("<layer"), "", "p.xml:7: "},
        {"Placeholder", project(layer(solid)), "out.png",
         "out.png: needs a placeholder such as [####] for 4 frames"},
        {"Depth", project(layer(solid)), "out.[#].png --depth half", "this format cannot hold half"},
        {"Strict", project(layer("")), "out.[#].png --strict", "p.xml:7: layer \"L\": it has no source"},
    };
    for (const auto& row : rows) {
        put("p.xml", row.document);
        const std::size_t before = countIn(".");
        EXPECT_EQ(run("render p.xml " + (row.arguments.empty() ? "out.[#].png" : row.arguments)), 1)
            << row.name;
        EXPECT_THAT(output, HasSubstr(row.message)) << row.name;
        EXPECT_EQ(countIn("."), before) << row.name;
    }
}

TEST_F(RenderCommand, MissingMembersAreHeldOrBlack) {
    ASSERT_EQ(run("frames test 's.[@].png' --frames 1-4 --size 48x32"), 0);
    put("p.xml", project(layer(source("s.[@].png:0:5")), "width=\"48\" height=\"32\"", 6));
    fs::remove(folder + "/s.2.png");
    put("black.xml", project(layer("<solid c0=\"0\" c1=\"0\" c2=\"0\" alpha=\"1\">RGB</solid>")));
    ASSERT_EQ(run("render black.xml black.png --frames 0"), 0);
    ASSERT_EQ(run("render p.xml held.[#].png --missing hold"), 0) << output;
    EXPECT_THAT(output, HasSubstr("6 of 6 frames"));
    EXPECT_THAT(output, HasSubstr("3 drawn, 3 like another"));  // 0 as 1, 2 as 1, 5 as 4
    EXPECT_TRUE(same("held.0.png", "held.1.png") && same("held.2.png", "held.1.png") &&
                same("held.5.png", "held.4.png"));
    ASSERT_EQ(run("render p.xml black.[#].png --missing black"), 0) << output;
    EXPECT_TRUE(same("black.0.png", "black.png") && same("black.2.png", "black.png"));
    EXPECT_TRUE(same("black.3.png", "held.3.png"));
}

TEST_F(RenderCommand, SourcesMayChangeSizeAndDepthAndBeDamaged) {
    ASSERT_EQ(run("frames test 's.[@].exr' --frames 1-4 --size 48x32"), 0);
    ASSERT_EQ(run("frames test t.exr --frames 1-1 --size 20x60 --depth float"), 0);
    fs::rename(folder + "/t.exr", folder + "/s.2.exr");
    fs::resize_file(folder + "/s.3.exr", 300);
    put("p.xml", project(layer(source("s.[@].exr"))));
    EXPECT_EQ(run("render p.xml o.[@].png"), 1);
    EXPECT_THAT(output, HasSubstr("s.3.exr: "));
    EXPECT_THAT(output, HasSubstr("3 of 4 frames"));
    EXPECT_TRUE(exists("o.0.png") && exists("o.1.png") && !exists("o.2.png") && exists("o.3.png"));
}

TEST_F(RenderCommand, ThreadsResumeAndCacheGiveTheSameFrames) {
    ASSERT_EQ(run("frames test 's.[@].exr' --frames 1-8 --size 160x90"), 0);
    put("p.xml",
        project(layer(source("s.[@].exr")) +
                    layer(solid + transform("60 -20", "1 0.7", "0.5") + fade, "blend=\"15\" opacity=\"1\""),
                "width=\"160\" height=\"90\"", 8));
    const auto expectWhole = [&](const std::string& name) {
        for (int i = 0; i < 8; ++i)
            EXPECT_TRUE(same(name + std::to_string(i) + ".exr", "whole." + std::to_string(i) + ".exr"))
                << name << i;
    };
    const std::string arguments = "render p.xml --samples 2 --burn-in ";
    ASSERT_EQ(run(arguments + "whole.[#].exr --jobs 1 --sheet sheet.png"), 0) << output;
    EXPECT_TRUE(exists("sheet.png"));
    ASSERT_EQ(run(arguments + "jobs.[#].exr --jobs 3"), 0);
    expectWhole("jobs.");
    for (const char* range : {"0-2", "3-3", "4-7"})  // as machines of a farm would
        ASSERT_EQ(run(arguments + "part.[#].exr --jobs 5 --resume --frames " + range), 0) << output;
    expectWhole("part.");
    fs::remove(folder + "/part.5.exr");
    ASSERT_EQ(run(arguments + "part.[#].exr --resume"), 0);
    EXPECT_THAT(output, HasSubstr("7 frames are there already"));
    expectWhole("part.");

    fs::create_directories(folder + "/cache/v0");
    put("cache/v0/frame", "of another version");
    put("cache/note", "of somebody else");
    ASSERT_EQ(run(arguments + "first.[#].exr --cache cache"), 0);
    EXPECT_THAT(output, HasSubstr("8 drawn"));
    ASSERT_EQ(run(arguments + "second.[#].exr --cache cache"), 0);
    EXPECT_THAT(output, HasSubstr("0 drawn, 8 from the cache"));
    expectWhole("second.");
    EXPECT_EQ(file("cache/v0/frame") + file("cache/note"), "of another versionof somebody else");
    int damage = 0;  // another one in each entry
    for (const auto& entry : fs::directory_iterator(folder + "/cache/v1")) {
        std::string bytes = file("cache/v1/" + entry.path().filename().string());
        switch (damage++) {
            case 0:
                bytes.clear();
                break;
            case 1:
                bytes.resize(bytes.size() - 1);
                break;
            case 2:
                bytes.back() ^= 1;
                break;
            case 3:
                bytes.replace(0, 16, "kestrel frame v0");
                break;
            case 4:
                bytes = "no entry";
                break;
            case 5:
                bytes.replace(bytes.find("layer"), 5, "loyer");
                break;
        }
        put("cache/v1/" + entry.path().filename().string(), bytes);
    }
    ASSERT_EQ(run(arguments + "third.[#].exr --cache cache"), 0);
    EXPECT_THAT(output, HasSubstr("6 drawn, 2 from the cache"));
    EXPECT_THAT(output, HasSubstr("damaged, so the frame is drawn again"));
    expectWhole("third.");
    fs::last_write_time(folder + "/s.4.exr",
                        fs::last_write_time(folder + "/s.4.exr") + std::chrono::seconds(1));
    ASSERT_EQ(run(arguments + "fourth.[#].exr --cache cache"), 0);
    EXPECT_THAT(output, HasSubstr("1 drawn, 7 from the cache"));
    expectWhole("fourth.");
    EXPECT_EQ(run(arguments + "x.[#].exr --cache s.1.exr"), 1);  // no folder
    ASSERT_EQ(run(arguments + "one.[#].exr --cache one --frames 3"), 0);
    const fs::path entry = fs::directory_iterator(folder + "/one/v1")->path();
    fs::remove(entry);
    fs::create_directory(entry);
    ASSERT_EQ(run(arguments + "one.[#].exr --cache one --frames 3"), 0);
    EXPECT_THAT(output, HasSubstr("the cache does not grow: "));
    EXPECT_TRUE(same("one.3.exr", "whole.3.exr"));
}

TEST_F(RenderCommand, CtrlCLeavesWholeFramesAndResumeDoesTheRest) {
    put("p.xml",
        project(layer(solid + fade) + layer("<checker width=\"320\" height=\"180\" square=\"9\"/>" + fade,
                                            "blend=\"15\" opacity=\"1\""),
                "width=\"320\" height=\"180\"", 60));
    ASSERT_EQ(run("render p.xml whole.[##].png --samples 4"), 0) << output;
    EXPECT_EQ(shell("$K render p.xml part.[##].png --samples 4 --jobs 1 & "
                    "while kill -0 $! && ! [ -e part.02.png ]; do :; done; kill -INT $!; wait $!"),
              130)
        << output;
    EXPECT_THAT(output, HasSubstr("interrupted: --resume goes on"));
    EXPECT_FALSE(exists("part.59.png"));
    ASSERT_EQ(run("render p.xml part.[##].png --samples 4 --resume"), 0);
    EXPECT_THAT(output, HasSubstr(" frames are there already"));
    for (int i = 10; i < 60; ++i)
        EXPECT_TRUE(same("part." + std::to_string(i) + ".png", "whole." + std::to_string(i) + ".png")) << i;
    EXPECT_EQ(countIn("."), 121u);  // and nothing temporary
}

TEST_F(RenderCommand, AFullDiskLeavesNoFrame) {
    put("p.xml", project(layer(solid), "width=\"320\" height=\"180\"", 2));
    for (const char* extension : {"dpx", "exr", "jpg", "png", "tga", "tif"}) {
        EXPECT_EQ(shell(std::string("ulimit -f 0; trap '' XFSZ; $K render p.xml out.[#].") + extension), 1);
        EXPECT_THAT(output, HasSubstr("kestrel render: out.")) << extension;
        EXPECT_THAT(output, HasSubstr("0 of 2 frames")) << extension;
        EXPECT_EQ(countIn("."), 1u) << extension;
    }
    // A cache that cannot grow does no harm. Nobody can make files in /proc.
    fs::create_directory(folder + "/cache");
    fs::create_directory_symlink("/proc", folder + "/cache/v1");
    EXPECT_EQ(run("render p.xml out.[#].png --cache cache"), 0);
    EXPECT_THAT(output, HasSubstr("the cache does not grow: "));
    EXPECT_THAT(output, HasSubstr("2 of 2 frames"));
}

TEST_F(RenderCommand, TwoThousandLayers) {
    std::string layers;
    for (int i = 0; i < 2000; ++i)
        layers += layer(
            solid + transform(std::to_string(i % 100) + ' ' + std::to_string(i / 40), "0.2 0.2", "0.1") +
                fade,
            "blend=\"" + std::to_string(i % 3 * 11) + "\" opacity=\"1\"");
    put("p.xml", project(layers, "width=\"96\" height=\"54\"", 3));
    ASSERT_EQ(run("render p.xml out.[#].png --jobs 2"), 0) << output;
    EXPECT_THAT(output, HasSubstr("3 of 3 frames"));
    EXPECT_THAT(output, HasSubstr("1988 others"));
    EXPECT_TRUE(exists("out.2.png") && !same("out.0.png", "out.2.png"));
}

TEST_F(RenderCommand, ThumbnailsStandInTheProject) {
    put("p.xml", project(layer(solid), "width=\"300\" height=\"200\""));
    ASSERT_EQ(run("scene fingerprint p.xml"), 0);
    const std::string digest = output.substr(0, 32);
    ASSERT_EQ(run("render p.xml --thumbnail p.xml"), 0) << output;
    EXPECT_EQ(run("scene check --strict p.xml"), 0) << output;
    EXPECT_EQ(run("scene print p.xml"), 0);
    EXPECT_THAT(output, HasSubstr("thumbnail  size 75 x 50  armour 15012 characters"));
    EXPECT_EQ(run("scene fingerprint p.xml"), 0);
    EXPECT_EQ(output.substr(0, 32), digest);
    const std::string document = file("p.xml");
    const std::size_t start = document.find('>', document.find("<thumbnail")) + 1;
    const auto damaged = [&](std::size_t from, std::size_t count, const char* by) {
        std::string text = document;
        put("d.xml", text.replace(start + from, count, by));
        EXPECT_EQ(run("scene check d.xml"), 1);
        return output.substr(output.find("thumbnail"));
    };
    EXPECT_EQ(document.substr(start + 12, 4), "As1A");  // 0.2, 0.5 and 0.8 of 255 in the first group
    EXPECT_EQ(damaged(11, 1, "f"), "thumbnail: Magic Number does not match\n");
    EXPECT_EQ(damaged(100, 4, ""), "thumbnail: it does not hold 11250 bytes of pixels\n");
    EXPECT_EQ(damaged(100, 1, "+"), "thumbnail: its text holds a character that carries no value\n");
    EXPECT_EQ(damaged(8, 15004, ""), "thumbnail: Not enough data\n");
}

TEST_F(RenderCommand, TheShippedProjectIsSound) {
    EXPECT_EQ(run("scene check --strict " KESTREL_SOURCE_DIR "/examples/projects/daybreak.xml"), 0) << output;
}
