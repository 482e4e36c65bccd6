// kestrel transform, as a user runs it.
#include "CommandRow.h"

namespace {

constexpr CommandRow rows[] = {
    {"PrintsMatrixInverseAndParts", "", "--position 3,4 --scale 2,4", 0,
     "matrix        2 0 3\n              0 4 4\n              0 0 1\ndeterminant   8\n"
     "inverse       0.5 0 -1.5\n              0 0.25 -1\n              0 0 1\n"
     "position      3 4\nrotation      0\nscale         2 4\nshear         0\n"},
    {"SingularHasNoInverse", "", "--scale 0,1", 0,
     "matrix        0 0 0\n              0 1 0\n              0 0 1\ndeterminant   0\n"
     "inverse       none: the matrix is singular\n"
     "position      0 0\nrotation      0\nscale         0 1\nshear         0\n"},
    {"RegularWithoutADecomposition", "", "--3d --matrix '1 0 0 0 0 1 0 0 0 0 0 1 0 0 1 0'", 0,
     "matrix        1 0 0 0\n              0 1 0 0\n              0 0 0 1\n              0 0 1 0\n"
     "determinant   -1\n"
     "inverse       1 0 0 0\n              0 1 0 0\n              0 0 0 1\n              0 0 1 0\n"
     "decomposition none: the last entry is 0\n"},
    {"SpaceReadsThePositionFromTheTranspose", "", "--3d --position 1,2,3 --scale 2", 0,
     "matrix        2 0 0 1\n              0 2 0 2\n              0 0 2 3\n              0 0 0 1\n"
     "determinant   8\n"
     "inverse       0.5 0 0 -0.5\n              0 0.5 0 -1\n              0 0 0.5 -1.5\n"
     "              0 0 0 1\n"
     "position      1 2 3\nrotation      0 0 0\nscale         2 2 2\nshear xz yz   0 0\n"},
    {"SpaceReadsTheRotationBehindScalesAndShear", "",
     "--3d --rotate 10,-20,30 --scale 2,3,4 --shear 15,0 | awk '/^rot/ { printf \"%.9f %.9f %.9f\\n\", $2, "
     "$3, $4 }'",
     0, "10.000000000 -20.000000000 30.000000000\n"},
    {"MapsPoints", "1 2\n\n-3.5,+4\n", "--position -10,5 --scale 2 --map", 0, "-8 9\n-17 13\n"},
    {"MapsPointsOfSpaceBack", "8 10 12", "--3d --scale 2,2,4 --inverse --map", 0, "4 5 3\n"},
    {"PivotLandsOnThePosition", "50 60", "--pivot 50,60 --position 7,8 --rotate 33 --shear 10,0 --map", 0,
     "7 8\n"},
    {"RoundsToPixels", "2.5 -2.5", "--map --pixels", 0, "3 -2\n"},
    {"DividesByTheWeight", "4 6", "--matrix '1 0 0 0 1 0 0 0 2' --perspective --map", 0, "2 3\n"},
    {"NamesTheBadLine", "1 2\n3 x\n", "--map", 2,
     "1 2\nkestrel transform: standard input:2: expected 2 numbers, found \"3 x\"\n"},
    {"NamesAnInputThatCannotBeRead", "", "--map </", 2,
     "kestrel transform: standard input: Is a directory\n"},
    {"PixelsAreOfPoints", "", "--pixels", 107,
     "--pixels requires --map\nRun with --help for more information.\n"},
    {"NotANumberHasNoSign", "nan -nan\n", "--map --scale -1", 0, "nan nan\n"},
    {"ToAFullDisk", "", "--scale 2 >/dev/full", 2, "kestrel: standard output: No space left on device\n"},
    {"PointsToAFullDisk", "1 2\n", "--map >/dev/full", 2,
     "kestrel: standard output: No space left on device\n"},
    {"WantsTheRightNumberOfCoordinates", "1 2 3\n", "--map", 2,
     "kestrel transform: standard input:1: expected 2 numbers, found \"1 2 3\"\n"},
    {"WantsNumbers", "", "--scale big", 2, "kestrel transform: --scale: \"big\" is not a list of numbers\n"},
    {"WantsWholeMatrices", "", "--matrix 1,2,3", 2,
     "kestrel transform: --matrix: expected 9 numbers, found 3 in \"1,2,3\"\n"},
    {"RefusesToInvertASingularMatrix", "", "--scale 0 --inverse", 2,
     "kestrel transform: the matrix is singular: it has no inverse\n"},
};

class TransformCommand : public testing::TestWithParam<CommandRow> {};

TEST_P(TransformCommand, Answers) { expectAnswer("transform", GetParam()); }
INSTANTIATE_TEST_SUITE_P(Cases, TransformCommand, testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

}  // namespace
