// kestrel frames and kestrel color, as a user runs them, on real image files.
#include "CommandFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

class FramesCommand : public CommandFolder {
protected:
    void truncate(const std::string& name) const { fs::resize_file(folder + "/" + name, 300); }
    std::size_t count() const { return countIn("."); }
};

}  // namespace

TEST_F(FramesCommand, TellsOfSequencesAndTheirGaps) {
    ASSERT_EQ(run("frames test 'a.[####].exr' --frames 1-6 --size 32x18"), 0) << output;
    EXPECT_EQ(run("frames info 'a.[####].exr'"), 0);
    EXPECT_EQ(output, "a.[####].exr\n  frames 1 to 6, 6 of 6 there\n  32x18, 4 channels, half, openexr\n");
    fs::remove(folder + "/a.0002.exr");
    fs::remove(folder + "/a.0004.exr");
    fs::remove(folder + "/a.0005.exr");
    EXPECT_EQ(run("frames info 'a.[####].exr:0:6'"), 1);
    EXPECT_EQ(output,
              "a.[####].exr:0:6\n  frames 0 to 6, 3 of 7 there\n  32x18, 4 channels, half, openexr\n"
              "  missing: 0, 2, 4-5\n");
    EXPECT_EQ(run("frames info nothing.png 'none.[@].png'"), 1);
    EXPECT_THAT(output, HasSubstr("nothing.png: no such file"));
    EXPECT_THAT(output, HasSubstr("none.[@].png: no frames of this sequence"));
}

TEST_F(FramesCommand, EveryFormatHoldsWhatItCan) {
    ASSERT_EQ(run("frames test 's.[@].png' --frames 1-1 --size 40x30 --depth 16"), 0) << output;
    const struct {
        const char* arguments;
        const char* layout;
    } rows[] = {{"o.exr", "40x30, 4 channels, half, openexr"},
                {"o.exr --depth float", "40x30, 4 channels, float, openexr"},
                {"o.png --depth 8", "40x30, 4 channels, 8 bits, png"},
                {"o.tif", "40x30, 4 channels, 16 bits, tiff"},
                {"o.tif --depth float", "40x30, 4 channels, float, tiff"},
                {"o.dpx", "40x30, 4 channels, 16 bits, dpx"},
                {"o.tga", "40x30, 4 channels, 8 bits, targa"},
                {"o.jpg", "40x30, 3 channels, 8 bits, jpeg"},
                {"o.png --size 7x5", "7x5, 4 channels, 16 bits, png"},
                {"o.png --crop -5,10,20x11", "20x11, 4 channels, 16 bits, png"}};
    for (const auto& row : rows) {
        ASSERT_EQ(run(std::string("frames convert s.1.png ") + row.arguments), 0) << output;
        run("frames info " + std::string(row.arguments).substr(0, std::string(row.arguments).find(' ')));
        EXPECT_THAT(output, HasSubstr(row.layout)) << row.arguments;
    }
}

TEST_F(FramesCommand, StepsThatUndoEachOtherGiveTheSameFile) {
    ASSERT_EQ(run("frames test 's.[@].png' --frames 3-3 --size 64x48 --depth 8"), 0) << output;
    ASSERT_EQ(run("frames convert s.3.png same.png"), 0) << output;
    EXPECT_TRUE(file("same.png") == file("s.3.png"));
    const char* const roundTrips[][2] = {
        {"flipped.png --flip", "back.png --flip"},
        {"deep.png --depth 16", "back.png --depth 8"},
        {"deep.exr --depth float", "back.png --depth 8"},
        {"deep.exr --depth half", "back.png --depth 8"},
        {"large.png --size 128x96", "back.png --size 64x48"},
        {"wide.png --crop -8,-8,80x64", "back.png --crop 8,8,64x48"},
    };
    for (const auto& [there, back] : roundTrips) {
        ASSERT_EQ(run(std::string("frames convert s.3.png ") + there), 0) << output;
        const std::string middle = std::string(there).substr(0, std::string(there).find(' '));
        ASSERT_EQ(run("frames convert " + middle + " " + back), 0) << output;
        EXPECT_TRUE(file("back.png") == file("s.3.png")) << there;
    }
    ASSERT_EQ(run("frames convert s.3.png opaque.png --opaque --flip"), 0);
    EXPECT_TRUE(file("opaque.png") != file("flipped.png"));
    ASSERT_EQ(run("frames convert s.3.png grey.png --alpha-as-rgb"), 0);
    ASSERT_EQ(run("frames convert grey.png opaque.png --opaque"), 0);
    ASSERT_EQ(run("frames convert s.3.png both.png --opaque --alpha-as-rgb"), 0);
    EXPECT_TRUE(file("both.png") == file("opaque.png"));
    EXPECT_TRUE(file("both.png") != file("grey.png"));
    ASSERT_EQ(run("frames convert s.3.png deep.exr --depth float"), 0);
    ASSERT_EQ(run("frames convert deep.exr p.exr --premultiply"), 0);
    ASSERT_EQ(run("frames convert p.exr back.png --depth 8 --unpremultiply"), 0) << output;
    EXPECT_TRUE(file("back.png") == file("s.3.png"));
}

TEST_F(FramesCommand, BadFramesAreSkippedOrStopTheRun) {
    ASSERT_EQ(run("frames test 'a.[##].exr' --frames 1-4 --size 32x32"), 0);
    fs::remove(folder + "/a.02.exr");
    truncate("a.03.exr");
    EXPECT_EQ(run("frames convert 'a.[##].exr' 'b.[##].png' --jobs 3"), 1);
    EXPECT_THAT(output, HasSubstr("a.02.exr: no such file"));
    EXPECT_THAT(output, HasSubstr("a.03.exr: "));
    EXPECT_THAT(output, HasSubstr("2 of 4 frames"));
    EXPECT_TRUE(fs::exists(folder + "/b.01.png") && fs::exists(folder + "/b.04.png"));
    EXPECT_EQ(run("frames convert 'a.[##].exr' 'c.[##].png' --strict"), 1);
    EXPECT_TRUE(fs::exists(folder + "/c.01.png"));
    EXPECT_FALSE(fs::exists(folder + "/c.04.png"));
    EXPECT_EQ(count(), 3u + 2u + 1u);  // and no temporary file is left
}

TEST_F(FramesCommand, ARunGoesOnWhereItWasInterrupted) {
    ASSERT_EQ(run("frames test 'a.[##].png' --frames 1-5 --size 16x16"), 0);
    ASSERT_EQ(run("frames convert 'a.[##].png' 'whole.[##].tga'"), 0);
    ASSERT_EQ(run("frames convert 'a.[##].png' 'part.[##].tga' --frames 2-3"), 0);
    std::ofstream(folder + "/part.03.tga") << "left alone";
    EXPECT_EQ(run("frames convert 'a.[##].png' 'part.[##].tga' --resume"), 0);
    EXPECT_THAT(output, HasSubstr("2 frames are there already"));
    EXPECT_EQ(file("part.03.tga"), "left alone");
    for (const char* name : {"01", "02", "04", "05"})
        EXPECT_TRUE(file(std::string("part.") + name + ".tga") ==
                    file(std::string("whole.") + name + ".tga"));
}

TEST_F(FramesCommand, RefusesWhatCannotBeRight) {
    ASSERT_EQ(run("frames test 'a.[##].png' --frames 1-2 --size 16x16"), 0);
    fs::create_symlink("a.01.png", folder + "/link.png");
    fs::create_directory(folder + "/closed");
    const struct {
        const char* arguments;
        const char* reason;
    } rows[] = {
        {"a.01.png a.01.png", "a.01.png: would overwrite an input"},
        {"a.01.png ./a.01.png", "would overwrite an input"},
        {"link.png a.01.png", "would overwrite an input"},
        {"'a.[##].png' 'a.[##].png:2:9'", "would overwrite an input"},
        {"'a.[##].png' 'a.[##].png:2:9' --frames 1-1", "a.02.png: would overwrite an input"},
        {"'a.[##].png' one.png", "needs a placeholder"},
        {"a.01.png 'b.[##].png'", "the input is a single file"},
        {"'a.[##].png' 'b.[##].png:1:1'", "the range is shorter"},
        {"'a.[##].png' 'b.[##].png' --frames 7-9", "no frames in that range"},
        {"a.01.png b.xyz", "no image format that can be written"},
        {"a.01.png b.jpg --depth 16", "b.jpg: this format cannot hold 16 bits"},
        {"a.01.png b.png --size 0x5", "'0x5' is not WxH"},
        {"a.01.png b.png --crop 1,2,3", "'1,2,3' is not X,Y,WxH"},
        {"a.01.png b.png --unpremultiply=mud", "'mud' is no colour"},
        {"a.01.png missing/b.png", "missing/b.png: "},
        {"a.01.png closed", "no image format"},
    };
    const std::string before = file("a.01.png") + file("a.02.png");
    for (const auto& row : rows) {
        EXPECT_NE(run(std::string("frames convert ") + row.arguments), 0) << row.arguments;
        EXPECT_THAT(output, HasSubstr(row.reason)) << row.arguments;
    }
    EXPECT_EQ(run("frames sheet 'a.[##].png' ./a.02.png"), 1);
    EXPECT_THAT(output, HasSubstr("./a.02.png: would overwrite an input"));
    EXPECT_EQ(run("frames test one.png --frames 1-2"), 1);
    EXPECT_THAT(output, HasSubstr("one.png: needs a placeholder such as [####] for 2 frames"));
    EXPECT_EQ(run("frames test one.jpg --frames 1-1 --depth half"), 1);
    EXPECT_THAT(output, HasSubstr("one.jpg: this format cannot hold half"));
    EXPECT_TRUE(file("a.01.png") + file("a.02.png") == before);
    EXPECT_EQ(count(), 4u);
}

TEST_F(FramesCommand, CorruptFilesOfEveryKindAreReported) {
    ASSERT_EQ(run("frames test 'a.[@].png' --frames 1-1 --size 64x64 --depth 8"), 0);
    for (const char* extension : {"png", "exr", "tif", "dpx", "tga", "jpg"}) {
        const std::string name = std::string("broken.") + extension;
        ASSERT_EQ(run("frames convert a.1.png " + name), 0) << output;
        truncate(name);
        EXPECT_EQ(run("frames convert " + name + " out.png --strict"), 1) << name << output;
        EXPECT_THAT(output, HasSubstr(name + ": ")) << name;
        std::ofstream(folder + "/" + name) << "this is no picture";
        EXPECT_EQ(run("frames info " + name), 1) << name;
        std::ofstream(folder + "/" + name).close();
        EXPECT_EQ(run("frames info " + name), 1) << name;
    }
    EXPECT_FALSE(fs::exists(folder + "/out.png"));
}

TEST_F(FramesCommand, TestSequencesMayNameTheirRange) {
    ASSERT_EQ(run("frames test 'a.[##].png:11:12' --frames 1-2 --size 8x8"), 0) << output;
    EXPECT_EQ(output, "a.11.png\na.12.png\n");
    EXPECT_EQ(run("frames test 'b.[##].png:11:12' --frames 1-3 --size 8x8"), 1);
    EXPECT_THAT(output, HasSubstr("b.[##].png:11:12: the range is shorter"));
    EXPECT_EQ(count(), 2u);
}

TEST_F(FramesCommand, TheLargestNumberIsTheLast) {
    ASSERT_EQ(run("frames test 'a.[@].png' --frames 2147483647-2147483647 --size 8x8"), 0) << output;
    EXPECT_EQ(output, "a.2147483647.png\n");
    EXPECT_EQ(run("frames info 'a.[@].png' >/dev/full"), 2);
    EXPECT_EQ(output, "kestrel: standard output: No space left on device\n");
}

TEST_F(FramesCommand, SheetsShowEveryFrame) {
    ASSERT_EQ(run("frames test 'a.[##].png' --frames 1-5 --size 64x36"), 0);
    ASSERT_EQ(run("frames sheet 'a.[##].png' sheet.png --columns 3 --width 32"), 0) << output;
    run("frames info sheet.png");
    EXPECT_THAT(output, HasSubstr("128x60, 4 channels, 8 bits, png"));  // 3 * 40 + 8, 2 * (18 + 8) + 8
    fs::remove(folder + "/a.03.png");
    EXPECT_EQ(run("frames sheet 'a.[##].png' gap.png"), 1);
    EXPECT_THAT(output, HasSubstr("a.03.png: no such file"));
    EXPECT_TRUE(fs::exists(folder + "/gap.png"));
}

TEST_F(FramesCommand, ColoursAreConverted) {
    const struct {
        const char* arguments;
        int status;
        const char* output;
    } rows[] = {
        {"'#ff8000' --to hsv", 0, "hsv(30.1176, 1, 1)\n"},
        {"'hsv(120, 1, 0.5)' --to rgb", 0, "rgb(0, 0.5, 0)\n"},
        {"1,0,0 --to hwb", 0, "hwb(360, 0, 0)\n"},
        {"clear --to rgb", 0, "rgb(0, 0, 0, 0)\n"},
        {"'HSL( 0 , 0 , 0.25 , 0.5 )' --to rgb", 0, "rgb(0.25, 0.25, 0.25, 0.5)\n"},
        {"'hsv(360, 1, 1)' --to rgb", 0, "rgb(1, 0, 0)\n"},
        {"'hsv(-1e-30, 1, 1)' --to rgb", 0, "rgb(1, 0, 0)\n"},
        {"'hwb(-240, 0, 0)' --to rgb", 0, "rgb(0, 1, 0)\n"},
        {"'hsl(1e6, 1, 0.5)' --to hsl", 0, "hsl(280, 1, 0.5)\n"},
        {"'hwb(-720, 0, 0)' --to hwb", 0, "hwb(0, 0, 0)\n"},
        {"red >/dev/full", 2, "kestrel: standard output: No space left on device\n"},
        {"'#00ff0080' --to yiq", 0, "yiq(0.587, -0.274, -0.523, 0.501961)\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(run(std::string("color ") + row.arguments), row.status) << row.arguments;
        EXPECT_EQ(output, row.output) << row.arguments;
    }
    EXPECT_EQ(run("color white"), 0);
    EXPECT_THAT(output, HasSubstr("white  #ffffff\n  hsl("));
    for (const char* bad :
         {"mud", "1,2", "1,2,3,4,5", "'#12'", "'#12345g'", "'xyz(1,2,3)'", "'hsv(1,2,3'", "nan,0,0", "''"}) {
        EXPECT_EQ(run(std::string("color ") + bad), 2) << bad;
        EXPECT_THAT(output, HasSubstr("is no colour")) << bad;
    }
    ASSERT_EQ(run("color --planes planes --size 8"), 0) << output;
    EXPECT_EQ(std::distance(fs::directory_iterator(folder + "/planes"), {}), 7);
    run("frames info planes/hsv.png");
    EXPECT_THAT(output, HasSubstr("26x8, 4 channels, 8 bits, png"));
}
