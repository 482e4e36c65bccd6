// kestrel scene, as a user runs it: a child process on real files.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

const std::string samples = KESTREL_SOURCE_DIR "/examples/scenes/";

struct Result {
    int status;
    std::string output, errors;
};

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class SceneCommand : public testing::Test {
protected:
    SceneCommand() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kestrel-scene-XXXXXX").string();
        if (mkdtemp(pattern.data())) m_folder = pattern;
    }
    ~SceneCommand() override { std::filesystem::remove_all(m_folder); }

    std::string file(const std::string& name) const { return m_folder + '/' + name; }
    std::string put(const std::string& name, const std::string& text) const {
        std::ofstream(file(name), std::ios::binary) << text;
        return file(name);
    }
    /// Runs "kestrel scene ..." in the folder; arguments may hold pipes and redirections of the shell.
    Result run(const std::string& arguments) const {
        const std::string command = "cd '" + m_folder +
                                    "'; K='" KESTREL_BIN_DIR "/kestrel'; { \"$K\" scene " + arguments +
                                    "; } >.output 2>.errors";
        const int status = std::system(command.c_str());
        Result result{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                      contents(file(".output")), contents(file(".errors"))};
        std::filesystem::remove(file(".output"));
        std::filesystem::remove(file(".errors"));
        return result;
    }
    int fileCount() const {
        return static_cast<int>(std::distance(std::filesystem::directory_iterator(m_folder), {}));
    }

private:
    std::string m_folder;
};

TEST_F(SceneCommand, SamplesAreSoundAndComeBack) {
    for (const char* name : {"title", "names", "deep", "unknown"}) {
        SCOPED_TRACE(name);
        const std::string sample = samples + name + ".xml";
        const Result checked = run("check " + sample);
        EXPECT_EQ(checked.status, 0);
        EXPECT_EQ(checked.output + checked.errors, "");
        ASSERT_EQ(run("copy " + sample + " once.xml").status, 0);
        ASSERT_EQ(run("copy once.xml twice.xml").status, 0);
        EXPECT_EQ(contents(file("once.xml")), contents(file("twice.xml")));
        const bool isOurs = name[0] == 't' || name[0] == 'n';
        EXPECT_EQ(contents(file("once.xml")) == contents(sample), isOurs);
        const std::string digests = run("fingerprint " + sample + " once.xml").output;
        ASSERT_EQ(digests.size(), 2 * 32 + sample.size() + 14) << digests;
        EXPECT_EQ(digests.substr(0, 32), digests.substr(32 + 2 + sample.size() + 1, 32));
    }
}

TEST_F(SceneCommand, FingerprintFollowsValuesNotNames) {
    const std::string text = contents(samples + "title.xml");
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string changed = text;
        const auto at = changed.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        changed.replace(at, from.size(), to);
        put("changed.xml", changed);
        return run("fingerprint changed.xml").output.substr(0, 32);
    };
    const std::string same = with("Opening", "Opening");
    EXPECT_EQ(same.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_EQ(with("name=\"Sky\"", "name=\"Heaven\""), same);
    EXPECT_NE(with("opacity=\"0.35\"", "opacity=\"0.36\""), same);
    EXPECT_NE(with("grain.mov", "noise.mov"), same);
    EXPECT_NE(with("24 FPS", "25 FPS"), same);
}

TEST_F(SceneCommand, PrintsATree) {
    const Result plain = run("print " + samples + "title.xml");
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.output.substr(0, plain.output.find("    layer \"Grain\"")),
              "project \"Opening title\"  version 1\n"
              "  composition \"Main\"  size 1920 x 1080  timecode 24 FPS  start 0  duration 240\n"
              "    layer \"Sky\"  frames 0 to 240  blend Normal  opacity 1\n"
              "      solid  RGB 0.05 0.1 0.25  alpha 1\n"
              "      keyframes \"color.c2\"  0 0.25  120 0.6  239 0.25\n"
              "    layer \"Title\"  frames 12 to 120  blend Screen  opacity 1\n"
              "      source /footage/title.[####].exr\n"
              "      transform  position 960 540 0  pivot 400 120 0\n"
              "      keyframes \"opacity\"  12 0  24 1  108 1  120 0\n");
    EXPECT_NE(run("print --color always " + samples + "title.xml").output.find("\033["), std::string::npos);
    EXPECT_NE(
        run("print --identifiers " + samples + "title.xml").output.find("3d28b887bdff14849bd1d1d7d861cfc9"),
        std::string::npos);
    std::string hostile = contents(samples + "title.xml");
    hostile.replace(hostile.find("Sky"), 3,
                    "\xc2\x9b"
                    "31m\n");  // a control character of eight bits
    put("hostile.xml", hostile);
    EXPECT_NE(run("print hostile.xml").output.find("layer \"?31m?\""), std::string::npos);
}

TEST_F(SceneCommand, NewAndGenerateMakeSoundDocuments) {
    EXPECT_EQ(run("new a.xml").status, 0);
    EXPECT_EQ(run("new b.xml").status, 0);
    EXPECT_NE(contents(file("a.xml")), contents(file("b.xml")));  // identifiers of their own
    EXPECT_EQ(run("check --strict a.xml b.xml").status, 0);
    EXPECT_EQ(run("copy a.xml a2.xml").status, 0);
    EXPECT_EQ(contents(file("a.xml")), contents(file("a2.xml")));
    const Result again = run("new a.xml");
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.errors, "kestrel: a.xml exists; --force replaces it\n");
    EXPECT_EQ(run("new --force a.xml").status, 0);

    EXPECT_EQ(run("generate g.xml --size 300KB --seed 5").status, 0);
    EXPECT_EQ(run("generate - --size 300KB --seed 5 | cmp - g.xml").status, 0);
    EXPECT_GE(contents(file("g.xml")).size(), 300'000u);
    EXPECT_EQ(run("check --strict g.xml").output, "");
    EXPECT_EQ(run("copy g.xml - | cmp - g.xml").status, 0);
    EXPECT_EQ(run("copy - - <g.xml | \"$K\" scene copy - piped.xml; cmp piped.xml g.xml").status, 0);
}

struct FaultRow {
    const char *name, *from, *to;  // in title.xml
    const char* faults;            // behind "title.xml:"; several with | between them
};
const FaultRow faultRows[] = {
    {"Version", "version=\"1\" name", "version=\"2\" name", "5: project: version 2 is not known"},
    {"Missing", " width=\"1920\"", "",
     "6: composition: attribute width is missing|6: composition: a frame of 0 by 1080 pixels is empty"},
    {"NotWhole", "in=\"12\"", "in=\"12.5\"", "15: layer: in is \"12.5\", not a whole number"},
    {"TooLarge", "blend=\"9\"", "blend=\"4294967305\"",
     "15: layer: blend is \"4294967305\", not a whole number of 32 bits"},
    {"NoBlendMode", "blend=\"9\"", "blend=\"7\"", "15: layer: there is no blend mode 7"},
    {"Opacity", "opacity=\"0.35\"", "opacity=\"1.35\"", "29: layer: opacity 1.35 is not in 0 to 1"},
    {"NotANumber", "opacity=\"0.35\"", "opacity=\"half\"", "29: layer: opacity is \"half\", not a number"},
    {"Backwards", "out=\"120\"", "out=\"11\"", "15: layer: it ends at frame 11, before it begins at 12"},
    {"Identifier", "3d28b887", "3d28b88",
     "5: project: identifier is \"3d28b88bdff14849bd1d1d7d861cfc9\", not 32 "
     "hexadecimal digits"},
    {"Twice", "3d28b887bdff14849bd1d1d7d861cfc9", "ac46374a846d97e22f917b6863f690ad",
     "8: layer: identifier ac46374a846d97e22f917b6863f690ad is used twice"},
    {"Vector", "960 540 0", "960 540", "18: position: \"960 540\" instead of 3 numbers"},
    {"Aspect", "aspect=\"1\"", "aspect=\"0\"", "15: layer: pixel aspect 0 is not positive"},
    {"Infinite", "960 540 0", "960 540 inf", "15: layer: its transform holds a number that is not finite"},
    {"Model", ">RGB<", ">CMYK<", "8: layer: its solid has the unknown colour model \"CMYK\""},
    {"Alpha", "alpha=\"1\"", "alpha=\"-1\"", "8: layer: its solid's alpha -1 is not in 0 to 1"},
    {"Count", "count=\"4\"", "count=\"5\"", "24: keyframes: 4 keys instead of 5"},
    {"OddKeys", "108 1 120 0", "108 1 120",
     "24: keyframes hold a frame without a number|"
     "24: keyframes: 3 keys instead of 4"},
    {"KeyOrder", "24 1 108", "24 1 8", "24: keyframes: frame 8 does not follow frame 24"},
    {"InfiniteKey", "24 1 108", "24 inf 108", "24: keyframes: they hold a number that is not finite"},
    {"Keys", "24 1 108", "24 one 108",
     "24: keyframes: 0 keys instead of 4|26: values: \"12 0 24 one 108 1 120 0\" "
     "is no list of numbers"},
    {"NoParameter", "<parameter>opacity</parameter>", "", "24: keyframes: no parameter is named"},
    {"NoTimecode", "<timecode>24 FPS</timecode>", "", "6: composition: there is no timecode mode"},
    {"Source", "grain.mov", "grain.####.mov", "29: layer: source is no URL"},
    {"SecondSolid", "</solid>", "</solid><solid c0=\"0\" c1=\"0\" c2=\"0\" alpha=\"1\">RGB</solid>",
     "9: a second solid in one layer"},
    {"NoProject", "zuml version", "scene version", "3: there is no project in it"},
    {"SecondProject", "</project>", "</project><project/>", "46: a second project; the first one is used"},
};
/// The lines of a report on title.xml, from a row's faults.
std::string report(const std::string& faults, const std::string& kind) {
    std::istringstream pieces(faults);
    std::string result;
    for (std::string piece; std::getline(pieces, piece, '|');) {
        const auto behindLine = piece.find(' ') + 1;
        result += "title.xml:" + piece.insert(behindLine, kind) + '\n';
    }
    return result;
}

class SceneFaults : public SceneCommand, public testing::WithParamInterface<FaultRow> {
protected:
    void putChangedTitle() const {
        const FaultRow& row = GetParam();
        std::string text = contents(samples + "title.xml");
        const auto at = text.find(row.from);
        ASSERT_NE(at, std::string::npos);
        text.replace(at, std::string(row.from).size(), row.to);
        if (std::string(row.name) == "NoProject") text.replace(text.find("</zuml>"), 7, "</scene>");
        put("title.xml", text);
    }
};
TEST_P(SceneFaults, AreReportedWithTheirLine) {
    putChangedTitle();
    const Result result = run("check title.xml");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, report(GetParam().faults, ""));
}
INSTANTIATE_TEST_SUITE_P(Rows, SceneFaults, testing::ValuesIn(faultRows),
                         [](const auto& row) { return row.param.name; });

const FaultRow warningRows[] = {
    {"UnknownMode", "24 FPS", "26 FPS",
     "6: composition: timecode mode \"26 FPS\" is not registered; \"24 FPS\" would be used"},
    {"ModeInOtherLetters", "24 FPS", "24 fps",
     "6: composition: timecode mode \"24 fps\" is not registered; \"24 FPS\" would be used"},
    {"NoFrames", "duration=\"240\"", "duration=\"0\"", "6: composition: it has no frames"},
    {"EmptyLayer", "out=\"120\"", "out=\"12\"", "15: layer: it has no frames: it begins and ends at 12"},
    {"FlatInX", "<scale>1 1 1", "<scale>0 1 1",
     "15: layer: its transform is singular: it cannot be inverted"},
    {"FlatInY", "<scale>1 1 1", "<scale>1 -0 1",
     "15: layer: its transform is singular: it cannot be inverted"},
    {"FlatInZ", "<scale>1 1 1", "<scale>1 1 0",
     "15: layer: its transform is singular: it cannot be inverted"},
    {"FlatAndTurned", "<rotation>0 0 0</rotation>\n\t\t\t\t<scale>1 1 1",
     "<rotation>0.3 0.2 0.7</rotation><scale>2 0 3",
     "15: layer: its transform is singular: it cannot be inverted"},
    {"Several", "24 FPS</timecode>\n\t\t<layer name=\"Sky\"",
     "none</timecode><layer name=\"Empty\" in=\"7\" out=\"7\" blend=\"0\" opacity=\"1\" "
     "identifier=\"0f656b38f3402a1e8b4211fac826efd4\"/>\n\t\t<layer name=\"Sky\"",
     "6: composition: timecode mode \"none\" is not registered; \"24 FPS\" would be used|"
     "7: layer: it has no frames: it begins and ends at 7"},
};
class SceneWarnings : public SceneFaults {};
TEST_P(SceneWarnings, AreFaultsOnlyWhenAsked) {
    putChangedTitle();
    const Result warned = run("check title.xml");
    EXPECT_EQ(warned.status, 0);
    EXPECT_EQ(warned.output, report(GetParam().faults, "warning: "));
    const Result strict = run("check --strict title.xml");
    EXPECT_EQ(strict.status, 1);
    EXPECT_EQ(strict.output, report(GetParam().faults, ""));
}
INSTANTIATE_TEST_SUITE_P(Rows, SceneWarnings, testing::ValuesIn(warningRows),
                         [](const auto& row) { return row.param.name; });

TEST_F(SceneCommand, NearlySingularOrEmptyIsNoWarning) {
    for (const auto& [from, to] :
         {std::pair("<scale>1 1 1", "<scale>1e-30 -1e-30 1"),
          {"out=\"120\"", "out=\"13\""},
          {"duration=\"240\"", "duration=\"1\""},
          {"in=\"12\" out=\"120\"", "in=\"-9223372036854775808\" out=\"9223372036854775807\""},
          {"in=\"12\" out=\"120\"", "in=\"9007199254740992\" out=\"9007199254740993\""},
          {"24 FPS", "30 FPS ND"}}) {
        std::string text = contents(samples + "title.xml");
        ASSERT_NE(text.find(from), std::string::npos);
        put("near.xml", text.replace(text.find(from), std::string(from).size(), to));
        EXPECT_EQ(run("check --strict near.xml").output, "") << to;
    }
}

TEST_F(SceneCommand, WarningsAndFaultsComeInTheOrderOfTheirLines) {
    std::string text = contents(samples + "title.xml");
    text.replace(text.find("24 FPS"), 6, "no FPS").replace(text.find("0.35"), 4, "1.35");
    text.replace(text.find("out=\"120\""), 9, "out=\"12\"");
    put("both.xml", text);
    const Result result = run("check both.xml " + samples + "title.xml");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output,
              "both.xml:6: warning: composition: timecode mode \"no FPS\" is not registered; \"24 FPS\" "
              "would be used\n"
              "both.xml:15: warning: layer: it has no frames: it begins and ends at 12\n"
              "both.xml:29: layer: opacity 1.35 is not in 0 to 1\n");
}

TEST_F(SceneCommand, UnknownElementsAreFaultsOnlyWhenAsked) {
    const std::string sample = samples + "unknown.xml";
    EXPECT_EQ(run("check --strict " + sample).output,
              sample + ":5: unknown element <history>\n" + sample + ":10: unknown element <palette>\n" +
                  sample + ":13: unknown element <marker>\n" + sample + ":16: unknown element <effect>\n" +
                  sample + ":20: unknown element <twirl>\n");
    EXPECT_EQ(run("copy " + sample + " out.xml").errors,
              "kestrel: " + sample + ": left out 5 unknown elements\n");
}

std::string repeat(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

struct BadRow {
    const char* name;
    std::string text;
    int line;  // 0: any place
};
const std::string start = "<?xml version=\"1.0\"?>\n<zuml version=\"2.1\">\n<project version=\"1\">\n";
const BadRow badRows[] = {
    {"Empty", "", 0},
    {"Blank", " \n\n", 0},
    {"Truncated", start + "<composition", 4},
    {"NotClosed", start + "</project>\n", 5},
    {"WrongEnd", start + "</zuml>\n", 4},
    {"Nul", start + std::string("\0", 1) + "</project></zuml>", 4},
    {"NotUtf8", start + "\xff\xfe</project></zuml>", 4},
    {"TwoRoots", start + "</project></zuml>\n<zuml/>", 5},
    {"BadAttribute", start + "<composition width=12/></project></zuml>", 4},
    {"Random", "\x89PNG\r\n\x1a\n", 1},
    {"DeepAndOpen", start + repeat("<a>", 100'000), 4},
};
class SceneBadDocuments : public SceneCommand, public testing::WithParamInterface<BadRow> {};
TEST_P(SceneBadDocuments, AreRefusedAndLeaveOutputsWhole) {
    put("bad.xml", GetParam().text);
    put("out.xml", "precious");
    const Result checked = run("check bad.xml");
    EXPECT_EQ(checked.status, 1);
    const std::string place =
        GetParam().line ? "bad.xml:" + std::to_string(GetParam().line) + ": " : std::string("bad.xml:");
    const auto at = checked.output.rfind("bad.xml:", checked.output.size() - 2);
    EXPECT_EQ(checked.output.substr(at == std::string::npos ? 0 : at, place.size()), place) << checked.output;
    EXPECT_EQ(run("copy bad.xml out.xml").status, 1);
    EXPECT_EQ(run("fingerprint bad.xml").output, "");
    EXPECT_EQ(run("fingerprint bad.xml").status, 1);
    EXPECT_EQ(contents(file("out.xml")), "precious");
    EXPECT_EQ(fileCount(), 2);  // no temporary file stays
}
INSTANTIATE_TEST_SUITE_P(Rows, SceneBadDocuments, testing::ValuesIn(badRows),
                         [](const auto& row) { return row.param.name; });

TEST_F(SceneCommand, HugeButSoundDocumentsPass) {
    const std::string sample = contents(samples + "title.xml");
    std::string deep = sample, wide = sample, laughs = sample;
    deep.insert(deep.find("</project>"), repeat("<a>", 100'000) + repeat("</a>", 100'000));
    wide.replace(wide.find("Sky"), 3, std::string(64 << 20, 'S'));
    laughs.replace(laughs.find("zuxmlscene>"), 11,
                   "zuxmlscene [<!ENTITY a \"ha\"><!ENTITY b \"" + repeat("&a;", 1000) + "\"><!ENTITY c \"" +
                       repeat("&b;", 1000) + "\"><!ENTITY d \"" + repeat("&c;", 1000) + "\">]>");
    laughs.insert(laughs.find("24 FPS"), "&d;");  // gives nothing
    put("deep.xml", deep);
    put("wide.xml", wide);
    put("laughs.xml", laughs);
    EXPECT_EQ(run("check deep.xml wide.xml laughs.xml").output, "");
    ASSERT_EQ(run("copy wide.xml wide2.xml").status, 0);
    EXPECT_TRUE(contents(file("wide2.xml")) == wide);
    ASSERT_EQ(run("copy laughs.xml laughs2.xml").status, 0);
    EXPECT_EQ(contents(file("laughs2.xml")), sample);
}

struct TroubleRow {
    const char* name;
    const char* arguments;
    int status;
    const char* error;  // a part of what is said
};
const TroubleRow troubleRows[] = {
    {"NoFile", "check none.xml", 2, "kestrel: none.xml: No such file or directory\n"},
    {"NoFileToCopy", "copy none.xml out.xml", 2, "kestrel: none.xml: No such file or directory\n"},
    {"Folder", "print .", 2, "kestrel: .: it is a folder\n"},
    {"IntoFolder", "copy in.xml .", 1, "kestrel: cannot write .: Is a directory\n"},
    {"NoFolder", "copy in.xml none/out.xml", 1,
     "kestrel: cannot write none/out.xml: No such file or directory\n"},
    {"FullDevice", "copy in.xml /dev/full", 1, "kestrel: cannot write /dev/full: No space left on device\n"},
    {"FullDeviceGenerated", "generate /dev/full --size 200KB", 1, "/dev/full: No space left on device\n"},
    {"SizeOfNothing", "generate - --size 0", 105, "--size: Value 0 not in range 1 to 18446744073709551615\n"},
    {"FullStandardOutput", "copy in.xml - >/dev/full", 1, "standard output: No space left on device\n"},
    {"PrintToFull", "print in.xml >/dev/full", 2, "kestrel: standard output: No space left on device\n"},
    {"FingerprintToFull", "fingerprint in.xml >/dev/full", 2, "standard output: No space left on device\n"},
    {"ClosedOutput", "print in.xml >&-", 2, "kestrel: standard output: Bad file descriptor\n"},
    {"ClosedInput", "check - <&-", 2, "kestrel: -: Bad file descriptor\n"},
    {"ReadOnlyPlace", "copy in.xml /proc/out.xml", 1, "kestrel: cannot write /proc/out.xml: "},
    {"FolderAsInputToCopy", "copy . out.xml", 2, "kestrel: .: it is a folder\n"},
    {"VanishedBeforeCheck", "check in.xml gone.xml", 2, "kestrel: gone.xml: No such file or directory\n"},
    // The file goes while it is being read: its name first, then, in the one row, what is left of it.
    {"VanishesWhileRead",
     "check --help >x; mkfifo gone; (exec 3>gone; rm gone x; cat in.xml >&3) & \"$K\" scene check gone", 0,
     ""},
    {"CutShortWhileRead",
     "check --help >x; mkfifo cut; (exec 3>cut; rm cut x; head -c 99 in.xml >&3) & \"$K\" scene check cut", 1,
     "Parse error (1) the document ends inside the element"},
    {"NoSize", "generate x.xml", 106, "--size"},
    {"BadSize", "generate x.xml --size lots", 105, "--size"},
};
class SceneTrouble : public SceneCommand, public testing::WithParamInterface<TroubleRow> {};
TEST_P(SceneTrouble, GivesAClearErrorAndStatus) {
    std::filesystem::copy_file(samples + "title.xml", file("in.xml"));
    const Result result = run(GetParam().arguments);
    EXPECT_EQ(result.status, GetParam().status) << result.errors;
    EXPECT_NE(result.errors.find(GetParam().error), std::string::npos) << result.errors;
    EXPECT_EQ(contents(file("in.xml")), contents(samples + "title.xml"));
    EXPECT_EQ(fileCount(), 1);
}
INSTANTIATE_TEST_SUITE_P(Rows, SceneTrouble, testing::ValuesIn(troubleRows),
                         [](const auto& row) { return row.param.name; });

TEST_F(SceneCommand, ACopyThatDoesNotFitLeavesTheOldDocument) {
    const std::string old = contents(samples + "title.xml");
    ASSERT_EQ(run("generate big.xml --size 200KB").status, 0);
    std::filesystem::create_directory(file("disk"));
    put("old.xml", old);
    // A disk of 64 KiB, which is gone with the shell that mounts it; where nobody may mount one, and
    // everywhere else too, a limit on the size of files, whose signal is ignored.
    const std::string copy =
        "\"$0\" scene copy big.xml disk/out.xml; status=$?; "
        "cp disk/out.xml after.xml; ls -A disk >left; rm -r disk/* disk/.k*; exit $status";
    const std::string mount = "mount -t tmpfs -o size=64k tmpfs disk 2>/dev/null";
    const bool mayMount = std::system("unshare -Urm mount -t tmpfs tmpfs /mnt >/dev/null 2>&1") == 0;
    std::vector<std::pair<std::string, const char*>> ways = {
        {"trap \"\" XFSZ; ulimit -f 64", "disk/out.xml: File too large\n"}};
    if (mayMount) ways.push_back({mount, "disk/out.xml: No space left on device\n"});
    for (const auto& [prepare, error] : ways) {
        SCOPED_TRACE(prepare);
        const std::string shell = mayMount ? "unshare -Urm sh" : "sh";
        const Result copied = run("--help >/dev/null; " + shell + " -c '" + prepare +
                                  "; cp old.xml disk/out.xml; " + copy + "' \"$K\"");
        EXPECT_EQ(copied.status, 1);
        EXPECT_NE(copied.errors.find(error), std::string::npos) << copied.errors;
        EXPECT_EQ(contents(file("after.xml")), old);
        EXPECT_EQ(contents(file("left")), "out.xml\n") << "no temporary file stays";
    }
}

TEST_F(SceneCommand, AReaderThatGoesAwayIsAnErrorNotASignal) {
    ASSERT_EQ(run("generate g.xml --size 2MB --seed 1").status, 0);
    ASSERT_EQ(mkfifo(file("gone").c_str(), 0600), 0);
    for (const std::string job : {"print g.xml", "copy g.xml -"}) {
        // The shell opens the pipe at both ends, then closes the reading one: nobody reads.
        const Result result =
            run("--help >/dev/null; exec 4<>gone 5>gone 4<&-; \"$K\" scene " + job + " >&5");
        EXPECT_NE(result.status, 0);
        EXPECT_LT(result.status, 128) << "ended by a signal";
        EXPECT_NE(result.errors.find("standard output: Broken pipe"), std::string::npos) << result.errors;
    }
}

TEST_F(SceneCommand, AnInterruptLeavesNothingBehind) {
    for (const auto& [signal, status] : {std::pair("INT", 130), {"TERM", 143}}) {
        SCOPED_TRACE(signal);
        put("out.xml", "precious");
        // The signal comes once the temporary file is there; the size takes far longer than that.
        const Result generated =
            run(std::string("generate --force out.xml --size 2GB & until ls .kestrel-* >/dev/null 2>&1; do "
                            ":; done; kill -") +
                signal + " $!; wait $!");
        EXPECT_EQ(generated.status, status) << generated.errors;
        EXPECT_NE(generated.errors.find("kestrel: interrupted\n"), std::string::npos) << generated.errors;
        EXPECT_EQ(contents(file("out.xml")), "precious");
        EXPECT_EQ(fileCount(), 1);
    }
}

TEST_F(SceneCommand, CopyKeepsModesAndFollowsLinks) {
    std::filesystem::copy_file(samples + "title.xml", file("real.xml"));
    std::filesystem::create_symlink("real.xml", file("link.xml"));
    chmod(file("real.xml").c_str(), 0640);
    ASSERT_EQ(run("copy " + samples + "names.xml link.xml").status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(file("link.xml")));
    EXPECT_EQ(contents(file("real.xml")), contents(samples + "names.xml"));
    struct stat status {};
    stat(file("real.xml").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    ASSERT_EQ(run("copy real.xml real.xml").status, 0);  // onto itself
    EXPECT_EQ(contents(file("real.xml")), contents(samples + "names.xml"));
    EXPECT_EQ(fileCount(), 2);
}

TEST_F(SceneCommand, HelpShowsExamples) {
    for (const char* command : {"", "new", "generate", "check", "print", "copy", "fingerprint"}) {
        const Result help = run(std::string(command) + " --help");
        EXPECT_EQ(help.status, 0) << command;
        EXPECT_NE(help.output.find(std::string("kestrel scene ") + command), std::string::npos)
            << help.output;
        EXPECT_NE(help.output.find("Examples:"), std::string::npos) << command;
    }
}

}  // namespace
