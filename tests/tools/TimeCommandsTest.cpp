// kestrel timecode and kestrel date, as a user runs them.
#include "CommandRow.h"

namespace {

constexpr CommandRow rows[] = {
    {"FrameToText", "", "timecode 1800", 0, "00:01:00;02\n"},
    {"TextToFrame", "", "timecode '00:01:00;02'", 0, "1800\n"},
    {"SeveralValues", "", "timecode 0 '00:10:00;00' -31", 0, "00:00:00;00\n17982\n-00:00:01;01\n"},
    {"NegativeText", "", "timecode --mode '24 FPS' -00:00:01:00", 0, "-24\n"},
    {"OwnMode", "", "timecode --fps 60 --drop 4 3600", 0, "00:01:00;04\n"},
    {"OwnModeWithIntervals", "", "timecode --fps 10 --drop 1 --interval 2 --keep 4 20 39", 0,
     "00:00:02;01\n00:00:04;00\n"},
    {"ImpossibleRuleDropsNothing", "", "timecode --fps 30 --drop 2 --interval 0 1800", 0, "00:01:00:00\n"},
    {"SumOfOneArgument", "", "timecode '01:00:00;00 + 250'", 0, "01:00:08;10\n"},
    {"SumOfManyArguments", "", "timecode '01:00:00;00' + 250 - '00:00:08;10'", 0, "01:00:00;00\n"},
    {"PrintsFrames", "", "timecode --print frames 5 '1:0' '1:0 + 1'", 0, "5\n30\n31\n"},
    {"PrintsTexts", "", "timecode --print text 5 '1:0'", 0, "00:00:00;05\n00:00:01;00\n"},
    {"PackedDigits", "", "timecode --mode '25 FPS' --packed 130 -130", 0, "55\n-55\n"},
    {"AroundADropPoint", "", "timecode --around '00:01:00;02' --rows 1", 0,
     "      frame  timecode        skipped\n"
     "       1799  00:00:59;29           0\n"
     "       1800  00:01:00;02           2\n"
     "       1801  00:01:00;03           2\n"},
    {"AroundADropPointBeforeZero", "", "timecode --around=-1799 --rows 1", 0,
     "      frame  timecode        skipped\n"
     "      -1800  -00:01:00;02         -2\n"
     "      -1799  -00:00:59;29          0\n"
     "      -1798  -00:00:59;28          0\n"},
    {"AroundTheLastFrame", "", "timecode --around 2147483647 --mode '24 FPS' --rows 1", 0,
     "      frame  timecode        skipped\n"
     " 2147483646  24855:08:05:06        0\n"
     " 2147483647  24855:08:05:07        0\n"},
    {"ListsModes", "", "timecode --list", 0,
     "mode          fps  drop  interval  keep\n"
     "24 FPS         24     0         0     0\n"
     "25 FPS         25     0         0     0\n"
     "30 FPS DF      30     2        60   600\n"
     "30 FPS ND      30     0         0     0\n"},
    {"ManyLines", "1\r\n\n  2\t3\n00:00:01;00 + 1", "timecode", 0,
     "00:00:00;01\n00:00:00;02\n00:00:00;03\n00:00:01;01\n"},
    {"NamesTheBadLine", "1\n2x\n3\n", "timecode", 2,
     "00:00:00;01\nkestrel timecode: standard input:2: \"2x\" is neither a frame number nor a timecode\n"},
    {"FiveFields", "", "timecode 1:2:3:4:5", 2,
     "kestrel timecode: \"1:2:3:4:5\" is neither a frame number nor a timecode\n"},
    {"SumWithoutItsEnd", "", "timecode 1 +", 2, "kestrel timecode: expected a value behind \"+\"\n"},
    {"FrameBeyond32Bits", "", "timecode 2147483648", 2,
     "kestrel timecode: \"2147483648\" is beyond the range of frames\n"},
    {"SumBeyond32Bits", "", "timecode 2147483647 + 1", 2,
     "kestrel timecode: 2147483648 is beyond the range of frames\n"},
    {"TextBeyond32Bits", "", "timecode 999999999:0:0:0", 2,
     "kestrel timecode: \"999999999:0:0:0\" is beyond the range of frames\n"},
    {"LastText", "", "timecode --mode '24 FPS' 24855:08:05:07", 0, "2147483647\n"},
    {"UnknownMode", "", "timecode --mode '25 fps' 1", 2,
     "kestrel timecode: no mode is called \"25 fps\"; there are \"24 FPS\", \"25 FPS\", \"30 FPS DF\", "
     "\"30 FPS ND\"\n"},
    {"NoFramesASecond", "", "timecode --fps 0 1", 105,
     "--fps: Value 0 not in range 1 to 2147483647\nRun with --help for more information.\n"},
    {"ListTakesNoValues", "", "timecode --list 5", 108,
     "values excludes --list\nRun with --help for more information.\n"},
    {"AroundTakesNoValues", "", "timecode --around 5 6", 108,
     "values excludes --around\nRun with --help for more information.\n"},
    {"SteersNoTerminal", "", "timecode \"$(printf '2\\033[2J')\"", 2,
     "kestrel timecode: \"2?[2J\" is neither a frame number nor a timecode\n"},
    {"CutsLongTexts", "", "timecode \"x$(printf '%098d' 0)\xC3\xA4\"", 2,
     "kestrel timecode: \"x0000000000000000000000000000000000000000000000000000000000000000000000"
     "0000000000000000000000000000...\" is neither a frame number nor a timecode\n"},
    {"AroundToAFullDisk", "", "timecode --around 5 >/dev/full", 2,
     "kestrel: standard output: No space left on device\n"},
    {"ManyRowsToAFullDisk", "", "timecode --around 5 --rows 9999 >/dev/full | cut -c 1-26", 0,
     "kestrel: standard output: \n"},
    {"TimecodeToAFullDisk", "", "timecode 1 >/dev/full", 2,
     "kestrel timecode: standard output: No space left on device\n"},

    {"SaveForms", "", "date 07-Mar-2005 07-03-2005 0x07036900 117664000", 0,
     "07-Mar-2005 0x07036900 1110153600\n07-Mar-2005 0x07036900 1110153600\n"
     "07-Mar-2005 0x07036900 1110153600\n07-Mar-2005 0x07036900 1110153600\n"},
    {"DateAsText", "", "date --print text 0x1f0c4500", 0, "31-Dec-1969\n"},
    {"DateAsValue", "", "date --print value 31-Dec-1969", 0, "0x1f0c4500\n"},
    {"DateAsSeconds", "", "date --print seconds 31-Dec-1969", 0, "-86400\n"},
    {"DateLines", "07-Mar-2005\n\n0x1f0c4500\r\n", "date --print text", 0, "07-Mar-2005\n31-Dec-1969\n"},
    {"BadDateLine", "07-Mar-2005\n7.3.2005\n", "date --print text", 2,
     "Couldn't parse '7.3.2005' into a date\n07-Mar-2005\n"
     "kestrel date: standard input:2: \"7.3.2005\" is no date like 07-Mar-2005, 07-03-2005 or 0x07036900\n"},
    {"NowTakesNoValues", "", "date --now 07-Mar-2005", 108,
     "values excludes --now\nRun with --help for more information.\n"},
    {"NowToAFullDisk", "", "date --now >/dev/full", 2, "kestrel: standard output: No space left on device\n"},
    {"DateBeyond32Bits", "", "date 20-Jan-2038", 2,
     "kestrel date: \"20-Jan-2038\" is outside 14-Dec-1901 to 19-Jan-2038\n"},
};

class TimeCommands : public testing::TestWithParam<CommandRow> {};

TEST_P(TimeCommands, Answer) { expectAnswer("", GetParam()); }
INSTANTIATE_TEST_SUITE_P(Cases, TimeCommands, testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

}  // namespace
