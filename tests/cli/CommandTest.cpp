#include "CommandLine.hpp"

#include <gtest/gtest.h>

#include <ostream>

// Each line is one case: a shell command, its exit code and its complete standard error. A command
// that fails must leave out.vtu and report.json unchanged and no temporary file behind.

namespace
{

struct Case
{
    const char* name;
    const char* command;
    int exitCode;
    const char* standardError;
};

// "operate" stands for "tavrin run 'Field/Tensor Field Operator'"; "trial NAME" runs an algorithm of
// the trial plug-in and "draw" paints arrows to out.png.
const Case cases[] =
    {
        // clang-format off
    {"Works", R"(operate "Field A=flow.vtu#velocity" "Operator=Norm of Field A" -o Field=out.vtu)", 0, ""},
    {"WorksWithoutPort", R"(operate "Field A=flow.vtu" -o out.vtu)", 0, ""},
    {"WorksOnSeries", R"(operate "Field A=double_gyre.pvd" -o series.pvd && tavrin info series.pvd | grep -q 'time steps  21 from 0 to 10')", 0, ""},
    {"WorksInPlaceOfLink", R"(ln -s out.vtu link.vtu; operate "Field A=flow.vtu" -o link.vtu && test -L link.vtu && tavrin info out.vtu | grep -q Norm)", 0, ""},
    {"OptionsAnywhere", R"(tavrin -v run --threads=1 -oout.vtu 'Field/Tensor Field Operator' --progress never "Field A=flow.vtu" --report r.json)", 0, ""},
    {"EmptyValueDisconnects", R"(operate "Field A=" -o out.vtu)", 1, "Input Field A was not set.\nerror: \"Field/Tensor Field Operator\" published nothing on \"Field\": Input Field A was not set.\n"},

    // Words
    {"UnknownCommand", "tavrin lst --bogus", 2, "error: unknown command \"lst\"; did you mean \"list\"?\n"},
    {"UnknownOption", "tavrin list --thread 3", 2, "error: unknown option \"--thread\"; did you mean \"--threads\"?\n"},
    {"UnknownShortOption", "tavrin info -x flow.vtu", 2, "error: unknown option \"-x\"; see \"tavrin --help\"\n"},
    {"MissingWord", "tavrin info", 2, "error: info needs FILE; see \"tavrin info --help\"\n"},
    {"TooManyWords", "tavrin info flow.vtu probe.vti", 2, "error: unexpected word \"probe.vti\"; the usage is \"tavrin info FILE\"\n"},
    {"WordAfterDashes", "tavrin info -- -x.vtu", 3, "error: -x.vtu: no such file\n"},
    {"MissingValue", "tavrin run Trial/Throw -o", 2, "error: --output: 1 required PORT=FILE missing\n"},
    {"EmptyThreads", "tavrin list --threads ''", 2, "error: --threads: \"\" is not a whole number from 1 to 1024\n"},
    {"BadThreads", "tavrin list --threads many", 2, "error: --threads: \"many\" is not a whole number from 1 to 1024\n"},
    {"TooManyThreads", "tavrin list --threads 5000", 2, "error: --threads: \"5000\" is not a whole number from 1 to 1024\n"},
    {"BadProgress", "tavrin list --progress soon", 2, "error: --progress: \"soon\" is not auto, always or never\n"},
    {"UnknownShell", "tavrin completion tcsh", 2, "error: there is no completion for \"tcsh\"; there is bash, zsh and fish\n"},

    // Algorithms and their options
    {"UnknownAlgorithm", "tavrin run 'Field/Tensor Field Operatr'", 2, "error: unknown algorithm \"Field/Tensor Field Operatr\"; did you mean \"Field/Tensor Field Operator\"?\n"},
    {"UnknownAlgorithmInHelp", "tavrin run 'Field/Tensor Feld Operator' --help", 2, "error: unknown algorithm \"Field/Tensor Feld Operator\"; did you mean \"Field/Tensor Field Operator\"?\n"},
    {"UnknownName", R"(operate "Feld A=flow.vtu" -o out.vtu)", 2, "error: \"Field/Tensor Field Operator\" has no option \"Feld A\"; did you mean \"Field A\"?\n"},
    {"NoAssignment", R"(operate "Field A" -o out.vtu)", 2, "error: \"Field A\" is not of the form NAME=VALUE\n"},
    {"MistypedChoice", "trial Everything Choice=ome", 2, "error: option \"Choice\": \"ome\" is not among the choices; did you mean \"one\"?\n"},
    {"UnknownChoice", "trial Everything Choice=three", 2, "error: option \"Choice\": \"three\" is not among the choices; there are \"one\", \"two\"\n"},
    {"BadNumber", R"(operate "Scalar C=abc" -o out.vtu)", 2, "error: option \"Scalar C\": \"abc\" is not a number\n"},
    {"BadWholeNumber", "trial Everything Number=1.5", 2, "error: option \"Number\": \"1.5\" is not a whole number\n"},
    {"BadColor", "trial Everything Color=red", 2, "error: option \"Color\": \"red\" is not a color: #rrggbb, #rrggbbaa, or r,g,b[,a] with components in 0..1\n"},
    {"GivenTwice", R"(operate "Scalar C=1" "Scalar C=2" -o out.vtu)", 2, "error: option \"Scalar C\" is given twice\n"},
    {"LabelTakesNothing", "trial Everything Note=x", 2, "error: option \"Note\" takes no text; it is a label option\n"},
    {"DataIsNotSetDirectly", "trial Everything Field:=flow.vtu", 2, "error: option \"Field\" takes no text; it is a data option\n"},
    {"ChoiceSetDirectly", R"(operate "Field A=flow.vtu" "Field B=flow.vtu" "Operator:=Nothing" -o out.vtu)", 1, "error: The chosen operator is not handled appropriately in code\n"},
    {"MissingRequired", "trial Everything", 2, "error: Missing input for mandatory option \"Field\"\n"},

    // Data references
    {"MissingFile", R"(operate "Field A=nix.vtu" -o out.vtu)", 3, "error: nix.vtu: no such file\n"},
    {"Folder", R"(mkdir d.vtu; operate "Field A=d.vtu" -o out.vtu)", 3, "error: d.vtu: is a folder\n"},
    {"EmptyFile", R"(: >e.vtu; operate "Field A=e.vtu" -o out.vtu)", 3, "error: e.vtu: is empty\n"},
    {"TruncatedFile", R"(head -c 500 flow.vtu >t.vtu; operate "Field A=t.vtu" -o out.vtu)", 3, "error: t.vtu: not a whole XML file: line 10, column 4, byte index 500: no element found\n"},
    {"Noise", R"(head -c 5000 "$PLUGIN" >n.vtk; operate "Field A=n.vtk" -o out.vtu)", 3, "error: n.vtk: not a legacy VTK file\n"},
    {"WrongInputExtension", R"(cp flow.vtu f.txt; tavrin info f.txt)", 3, "error: f.txt: a file with the extension .txt is not supported; supported are .vti, .vtr, .vts, .vtu, .vtp, .vtk, .vtm, .pvd, .csv and .series\n"},
    {"MissingArray", R"(operate "Field A=flow.vtu#velocty" -o out.vtu)", 2, "error: flow.vtu: no array \"velocty\"; did you mean \"velocity\"?\n"},
    {"GridOfAnotherDimension", R"(printf '# vtk DataFile Version 3.0\n\nASCII\nDATASET POLYDATA\nPOINTS 2 float\n0 0 0  1 0 0\n' >line.vtk; tavrin run 'Field/Sample Field on Given Grid' Field=double_gyre.pvd 'Grid=line.vtk?dimension=1' -o out.pvd)", 2, "error: option \"Grid\": it takes a 2-D grid or point set or a 3-D grid or point set, not a 1-D point set\n"},
    {"NamesWithControlCharacters", R"(printf '# vtk DataFile Version 3.0\n\nASCII\nDATASET STRUCTURED_POINTS\nDIMENSIONS 2 1 1\nORIGIN 0 0 0\nSPACING 1 1 1\nPOINT_DATA 2\nSCALARS a%%1B[31m%%0Ab%%C2%%9Bc double 1\nLOOKUP_TABLE default\n1 2\n' >odd.vtk; tavrin info odd.vtk | grep 31m >&2)", 0, "a [31m b c  points  1           float64    Scalar  -\n"},
    {"NoReference", R"(operate "Field A=#velocity" -o out.vtu)", 2, "error: \"#velocity\" names no file; a data reference is FILE#ARRAY?key=value&key=value\n"},
    {"UnknownKey", R"(operate "Field A=flow.vtu?tim=1" -o out.vtu)", 2, "error: unknown key \"tim\" in a data reference; did you mean \"time\"?\n"},
    {"MismatchingFields", R"(operate "Field A=flow.vtu" "Field B=abc_flow.vti" "Operator=Multiply (A*B)*C" -o out.vtu)", 1, "Input Fields do not match in domain or timesteps.\nerror: \"Field/Tensor Field Operator\" published nothing on \"Field\": Input Fields do not match in domain or timesteps.\n"},
    {"TypeNotTaken", R"(operate "Field A=flow.vtu" "Operator=Trace of Field A" -o out.vtu)", 1, "error: trace operation not available for the chosen data type\n"},

    // Outputs
    {"UnknownPort", R"(operate "Field A=flow.vtu" -o Feild=out.vtu)", 2, "error: \"Field/Tensor Field Operator\" has no output \"Feild\"; did you mean \"Field\"?\n"},
    {"NoOutputs", "trial Throw -o out.vtu", 2, "error: \"Trial/Throw\" has no outputs; -o out.vtu asks for one\n"},
    {"NothingAskedFor", R"(operate "Field A=nix.vtu")", 2, "error: the result would be lost; name an output: -o Field=FILE\n"},
    {"WrongExtension", R"(operate "Field A=nix.vtu" -o out.stl)", 2, "error: out.stl: a data file cannot have the extension \".stl\"; use .vti, .vtr, .vts, .vtu, .vtp, .pvd, .csv\n"},
    {"NoExtension", R"(operate "Field A=nix.vtu" -o Field=out)", 2, "error: out: a data file cannot have the extension \"\"; use .vti, .vtr, .vts, .vtu, .vtp, .pvd, .csv\n"},
    {"NoFile", R"(operate "Field A=nix.vtu" -o Field=)", 2, "error: output \"Field\" needs a file, as in -o Field=FILE.vti\n"},
    {"UnsuitableGrid", R"(operate "Field A=flow.vtu" -o out.vti)", 2, "error: out.vti: \".vti\" does not suit the grid of the input; use .vtu, .pvd, .csv\n"},
    {"UnsuitableSeries", R"(operate "Field A=double_gyre.pvd" -o out.vti)", 2, "error: out.vti: \".vti\" does not suit the grid of the input with 21 time steps; use .pvd, .csv\n"},
    {"SameOutputTwice", R"(operate "Field A=nix.vtu" -o new.vtu -o Field=./new.vtu)", 2, "error: ./new.vtu: is to be written twice\n"},
    {"OutputIsInput", R"(operate "Field A=flow.vtu#velocity" -o ../$(basename "$PWD")/flow.vtu 2>&1 | sed 's/tavrin-test-[^/]*/HERE/' >&2)", 0, "error: ../HERE/flow.vtu: is an input, and would be overwritten\n"},
    {"ReportIsColorMap", R"(echo '{}' >map.json; tavrin run 'Field/Show Hedgehogs' Field=flow.vtu "Color Map=map.json#a@0:1" -o out.png --report ./map.json; cat map.json >&2)", 0, "error: ./map.json: is an input, and would be overwritten\n{}\n"},
    {"OutputReplacesInputStep", R"(operate "Field A=double_gyre.pvd" -o q.pvd && operate "Field A=q/q_0000.vti" -o q.pvd)", 2, "error: q/q_0000.vti: is an input, and would be overwritten by the steps of q.pvd\n"},
    {"OutputReplacesLinkedInputStep", R"(operate "Field A=double_gyre.pvd" -o q.pvd && ln -s q/q_0000.vti a.vti && operate "Field A=a.vti" -o ./q.pvd)", 2, "error: a.vti: is an input, and would be overwritten by the steps of ./q.pvd\n"},
    {"OutputReplacesStepOfInput", R"(operate "Field A=double_gyre.pvd" -o q.pvd && cp q.pvd list.pvd && operate "Field A=list.pvd" -o q.pvd)", 2, "error: q/q_0000.vti: is an input, and would be overwritten by the steps of q.pvd\n"},
    {"OutputIsStepOfInput", R"(operate "Field A=double_gyre.pvd" -o q.pvd && operate "Field A=q.pvd?time=0" -o q/q_0003.vti)", 2, "error: q/q_0003.vti: is an input, and would be overwritten\n"},
    {"OutputIsStepOfOutput", R"(mkdir q; operate "Field A=double_gyre.pvd?time=0" -o q.pvd -o q/q_0000.vti)", 2, "error: q/q_0000.vti: is to be written twice\n"},
    {"OutputBesideStepsOfInput", R"(operate "Field A=double_gyre.pvd" -o q.pvd && operate "Field A=q/q_0000.vti" -o q/norm.vti && operate "Field A=q.pvd" -o r.pvd)", 0, ""},
    {"OutputFolderMissing", R"(operate "Field A=nix.vtu" -o nix/out.vtu)", 3, "error: nix/out.vtu: the folder nix does not exist\n"},
    {"OutputBelowFile", R"(operate "Field A=nix.vtu" -o report.json/out.vtu)", 3, "error: report.json/out.vtu: report.json is not a folder\n"},
    {"OutputIsFolder", R"(mkdir d.vtu; operate "Field A=nix.vtu" -o d.vtu)", 3, "error: d.vtu: is a folder\n"},
    {"ReportWithoutName", "trial Throw --report d/", 2, "error: \"d/\" names no file to write\n"},
    {"ReportIsPrinted", R"(trial Everything Field=flow.vtu --report - 2>log >r.json; cat log >&2; tail -c 2 r.json >&2; head -n 2 r.json | tail -n 1 >&2)", 0, "velocity; 3 0.5 some text one\nprinted\n}\n  \"formatVersion\": 1,\n"},
    {"ReportIsPrintedOnFullOutput", "trial Wait Seconds=0 Input=flow.vtu -o out.vtu --report - 2>/dev/null >/dev/full", 3, ""},
    {"ReportIsDevice", "trial Everything Field=flow.vtu --report /dev/null >/dev/null && test -c /dev/null", 0, ""},
    {"ReportIsOpenStream", R"(trial Everything Field=flow.vtu --report /dev/stdout >all && head -n 1 all >&2 && grep -c '^  "algorithm"' all >&2)", 0, "velocity; 3 0.5 some text one\n1\n"},
    {"LaterOutputFails", R"(operate "Field A=flow.vtu" -o Field=out.vtu -o Field=/proc/x.vtu)", 3, "error: /proc/x.vtu: No such file or directory\n"},
    {"LaterOutputOfASeriesFails", R"(operate "Field A=double_gyre.pvd" -o series.pvd >/dev/null && cat series.pvd series/* >before; operate "Field A=double_gyre.pvd?time=0" -o series.pvd -o Field=/proc/x.vts; code=$?; cat series.pvd series/* | cmp - before; exit $code)", 3, "error: /proc/x.vts: No such file or directory\n"},
    {"ReportFails", R"(operate "Field A=flow.vtu" -o out.vtu --report /proc/x.json)", 3, "error: /proc/x.json: No such file or directory\n"},
    {"DiskFull", R"(ulimit -f 16; operate "Field A=flow.vtu" -o out.vtu --report report.json)", 3, "error: out.vtu: File too large\n"},
    {"FullStandardOutput", "tavrin list >/dev/full", 3, "error: standard output: No space left on device\n"},
    {"FullStandardOutputOfRun", "trial Wait Seconds=0 Input=flow.vtu -o out.vtu >/dev/full", 3, "error: standard output: No space left on device\n"},
    {"ClosedStandardOutput", "{ tavrin man; echo $? >&2; } | true", 0, "0\n"},
    {"NoStandardOutput", "tavrin list >&-", 0, ""},

    // Pictures
    {"Picture", R"(draw Field=flow.vtu "Color Map=viridis" --size 200x150 && head -c 24 out.png | tail -c 8 | od -An -tx1 >&2)", 0, " 00 00 00 c8 00 00 00 96\n"},
    {"ScaleIsAdvised", "draw Field=flow.vtu Scale=1000 --size 20x20", 0, "hint: the longest arrows have a length of 1200, and neighboring samples are 0.32 apart; with \"Scale\" 0.26 both are equal\n"},
    {"TimeIsMissing", "draw Field=double_gyre.pvd Time=12 --size 20x20", 0, "hint: the field has values from time 0 to 10, none at 12; those at 0 are shown\n"},
    {"NoVectors", "draw Field=plate_with_hole.vts", 2, "error: option \"Field\": it takes a function of type 2-D Vector or a function of type 3-D Vector, not a function of type 3x3 Matrix on Points\n"},
    {"NothingToDraw", "draw", 1, "Input Field not set.\nerror: \"Field/Show Hedgehogs\" published nothing on \"Hedgehogs\": Input Field not set.\n"},
    {"UnknownColorMap", R"(draw Field=flow.vtu "Color Map=virids")", 2, "error: unknown color map \"virids\"; did you mean \"viridis\"?\n"},
    {"MissingColorMapFile", R"(draw Field=flow.vtu "Color Map=nix.json")", 3, "error: nix.json: no such file\n"},
    {"BrokenColorMapFile", R"(echo '{"broken' >m.json; draw Field=flow.vtu "Color Map=m.json")", 3, "error: m.json: is not valid JSON at line 1, column 9\n"},
    {"UnknownRepresentation", "draw Field=flow.vtu Representation=cone", 2, "error: option \"Representation\": \"cone\" is not among the choices; there are \"line\", \"arrow\", \"tube arrow\"\n"},
    {"RepresentationSetDirectly", "draw Field=flow.vtu Representation:=cone", 1, "error: Invalid gui option for Representation.\n"},
    {"UnknownAnchor", R"(draw Field=flow.vtu "Vector anchor point at=tail")", 2, "error: option \"Vector anchor point at\": \"tail\" is not among the choices; there are \"origin\", \"center\", \"destination\"\n"},
    {"AnchorSetDirectly", R"(draw Field=flow.vtu "Vector anchor point at:=tail" Representation=line)", 1, "error: bad_function_call\n"},
    {"NoPixels", "draw Field=flow.vtu --size 0x0", 2, "error: a picture of 0x0 pixels cannot be painted; each side takes 1 to 16384\n"},
    {"TooManyPixels", "draw Field=flow.vtu --size 100000x100000", 2, "error: a picture of 100000x100000 pixels cannot be painted; each side takes 1 to 16384\n"},
    {"NegativeSize", "draw Field=flow.vtu --size -5x10", 2, "error: --size: \"-5x10\" is not of the form WIDTHxHEIGHT, as in 1600x1200\n"},
    {"NoBackground", "draw Field=flow.vtu --background dark", 2, "error: --background: \"dark\" is not a color: #rrggbb, #rrggbbaa, or r,g,b[,a] with components in 0..1\n"},
    {"NoView", "draw Field=flow.vtu --view top", 2, "error: \"top\" is not a view; use x, -x, y, -y, z, -z, iso or AZIMUTH,ELEVATION in degrees, the elevation in -90 to 90\n"},
    {"PictureExtension", "tavrin run 'Field/Show Hedgehogs' Field=nix.vtu -o out.jpg", 2, "error: out.jpg: a picture cannot have the extension \".jpg\"; use .png, .svg, .pdf, .vtp\n"},
    {"NoEgl", "mkdir lib; : >lib/libEGL.so.1; LD_LIBRARY_PATH=lib draw Field=flow.vtu 'Representation=tube arrow'", 1, "error: no OpenGL 3.3 context without a display: the library libEGL.so.1 cannot be loaded\n"},
    {"NoOpenGlAtAll", "mkdir lib; : >lib/libepoxy.so.0; LD_LIBRARY_PATH=lib draw Field=flow.vtu 2>&1 | sed 's/: [^ ]*tavrin-painter:/: PAINTER:/' >&2", 0, "error: the picture cannot be painted: the painter ended with status 127: PAINTER: error while loading shared libraries: lib/libepoxy.so.0: file too short\n"},
    {"NoOpenGlNeeded", R"(mkdir lib; for name in epoxy.so.0 EGL.so.1 GL.so.1 cairo.so.2; do : >lib/lib$name; done; export LD_LIBRARY_PATH=$PWD/lib
        tavrin run Field/Info Field=flow.vtu >/dev/null && operate "Field A=flow.vtu" -o out.vtu && tavrin run 'Field/Show Hedgehogs' Field=flow.vtu -o arrows.vtp >/dev/null)", 0, ""},

    // Algorithms that fail
    {"Throws", "trial Throw", 1, "hint: try another\nerror: the matrix is singular\n"},
    {"ThrowsLines", "trial Throw What=lines", 1, "hint: try another\nerror: first second [31m\n"},
    {"ThrowsStandardException", "trial Throw What=standard", 1, "hint: try another\nerror: beyond the end\n"},
    {"ThrowsNumber", "trial Throw What=number", 1, "hint: try another\nerror: an exception of unknown kind\n"},
    {"RunsOutOfMemory", "trial Throw What=memory", 1, "hint: try another\nerror: not enough memory\n"},
    {"FileFailsLate", "trial Throw What=file", 3, "hint: try another\nerror: step7.vtu: no such file\n"},
    {"PrintsLogOfFailedRun", "trial Throw 2>&1 >/dev/null | tail -n 1 >&2; trial Throw 2>/dev/null | grep -q 'so far so good'", 0, "error: the matrix is singular\n"},
    {"Backtrace", "trial Throw -v 2>&1 | grep -c -e '^a detail$' -e '^error: the matrix is singular$' -e '^#0 .* in .* +0x' >&2", 0, "3\n"},
    {"ProgressLines", "trial Wait Seconds=1.5 Input=flow.vtu --progress always -o out.vtu 2>&1 | grep -c '^progress: wait [0-9]* %, [0-9.]* /s, [12] s left$' >&2", 0, "2\n"},
    {"NoProgressWithoutTerminal", "trial Wait Seconds=0.5 Input=flow.vtu -o out.vtu", 0, ""},

    // Data of all kinds
    {"FieldOfFunction", "trial Kinds Flow=flow.vtu >&2", 0, "Flow: velocity\n"},
    {"FieldOfAnotherType", "trial Kinds Flow=plate_with_hole.vts", 2, "error: option \"Flow\": it takes a 3-D field of type 3-D Vector, not a function of type 3x3 Matrix on Points\n"},
    {"FieldOfSeveralBlocks", R"(printf '<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet><DataSet index="0" file="flow.vtu"/><DataSet index="1" file="abc_flow.vti"/></vtkMultiBlockDataSet></VTKFile>' >all.vtm; trial Kinds Flow=all.vtm Pair=all.vtm >&2)", 0, "Flow: velocity\nPair: function velocity\nPair: function velocity\n"},
    {"MixedTakesGrid", "trial Kinds Mixed=flow.vtu >&2", 0, "Mixed: grid\n"},
    {"MixedRaisesDimension", "trial Kinds Mixed=probe.vti >&2", 0, "Mixed: grid\n"},
    {"MixedTakesFunction", "operate 'Field A=flow.vtu' -o norm.vtu && trial Kinds 'Mixed=norm.vtu?on=points' | grep -o 'Mixed: function Norm' >&2", 0, "Mixed: function Norm\n"},
    {"MixedRefusesOther", "trial Kinds Mixed=flow.vtu#velocity", 2, "error: option \"Mixed\": it takes a 3-D grid or point set or a function of type Scalar, not a function of type 3-D Vector on Points\n"},
    {"AnythingIsFunction", "trial Kinds Anything=flow.vtu >&2", 0, "Anything: function velocity\n"},
    {"AnythingIsGridWithoutArrays", R"(printf '# vtk DataFile Version 3.0\n\nASCII\nDATASET POLYDATA\nPOINTS 1 float\n0 0 0\n' >points.vtk; trial Kinds Anything=points.vtk >&2)", 0, "Anything: grid\n"},
    {"AnythingIsNotGuessed", "trial Kinds 'Anything=flow.vtu#nix'", 2, "error: flow.vtu: no array \"nix\"; there is \"velocity\"\n"},
    {"AnythingIsColorMap", "trial Kinds Anything=viridis@0:1 >&2", 0, "Anything: other\n"},
    {"BundleIsConnectedWhole", "trial Kinds Pair=flow.vtu Scale=2 Pair=abc_flow.vti >&2", 0, "Pair: function velocity\nPair: function velocity\n"},
    {"BundleOfThreeIsRefused", "trial Kinds Pair=flow.vtu Pair=flow.vtu Pair=flow.vtu", 2, "error: option \"Pair\": it does not take a bundle of 3 objects\n"},
    {"BundleIsEmptied", "trial Kinds Things=flow.vtu Things= Things=gray Things=flow.vtu#velocity >&2", 0, "Things: other\nThings: function velocity\n"},
    {"DataComesBeforeValues", "trial Kinds Scale=2 Pair=flow.vtu Pair=flow.vtu >/dev/null && tavrin --plugin \"$PLUGIN\" describe Trial/Kinds Scale=2 Pair=flow.vtu Pair=flow.vtu >/dev/null", 0, ""},
    {"RefusedChange", "trial Kinds Scale=2", 2, "error: option \"Scale\": needs a pair\n"},

    // Logs
    {"PrintsWholeLines", "trial Print -v 2>&1 >out | cat >err; cat out err >&2", 0, "first\nprinted 1 and 2\nsecond\nprinted 3\nthird\npart of an error\ndetail\ncomplete\nhint: a hint\n"},
    {"PrintsWholeLinesToOneFile", "trial Print -v >all 2>&1; cat all >&2", 0, "first\nprinted 1 and 2\nsecond\npart of an error\ndetail\nprinted 3\nthird\ncomplete\nhint: a hint\n"},
    {"LogsBeforeCrash", "{ trial LastWords Crash=true >log; } 2>/dev/null; cat log >&2", 0, "last words\n"},
    {"LogsBeforeInterrupt", R"(tavrin --plugin "$PLUGIN" run Trial/LastWords >log & started; kill -INT $!; wait $!; code=$?; cat log >&2; exit $code)", 130, "interrupted\nlast words\n"},

    // Interruption
    {"Interrupted", R"(tavrin --plugin "$PLUGIN" run Trial/Wait Input=flow.vtu -o out.vtu --report report.json & started; kill -INT $!; wait $!)", 130, "interrupted\n"},
    {"Terminated", R"(tavrin --plugin "$PLUGIN" run Trial/Wait Input=flow.vtu -o out.vtu --report report.json & started; kill -TERM $!; wait $!)", 130, "interrupted\n"},
    {"HungUp", R"(tavrin --plugin "$PLUGIN" run Trial/Wait Input=flow.vtu -o out.vtu --report report.json & started; kill -HUP $!; wait $!)", 130, "interrupted\n"},
    {"HangupIsIgnored", R"(trap '' HUP; tavrin --plugin "$PLUGIN" run Trial/Wait Seconds=1 Input=flow.vtu -o out.vtu & started; kill -HUP $!; wait $!)", 0, ""},
    {"InterruptedBeforeAPipeIsRead", R"(mkfifo f.csv; tavrin run 'Field/Tensor Field Operator' "Field A=flow.vtu" -o f.csv & sleep 0.5; kill -TERM $!; wait $!)", 130, "interrupted\n"},
    {"InterruptedTwice", R"(tavrin --plugin "$PLUGIN" run Trial/Wait Stubborn=true -o out.vtu & started; kill -INT $!; sleep 0.2; kill -TERM $!; { wait $!; } 2>/dev/null)", 143, ""},

    // Limits of the system
    {"NoThreads", R"(ulimit -s 1000000000; operate "Field A=flow.vtu" -o out.vtu --threads 3)", 1, "error: 3 threads cannot be started: Resource temporarily unavailable; use --threads with a smaller number\n"},
    {"OneThreadIsThere", R"(ulimit -s 1000000000; operate "Field A=flow.vtu" -o out.vtu --threads 1 --progress always)", 0, ""},

    // Example data
    {"ExamplesReplaceNothing", "mkdir e; echo mine >e/flow.vtu; tavrin examples e; code=$?; ls e; cat e/flow.vtu >&2; exit $code", 3, "error: e/flow.vtu: exists; use --force to replace existing files\nmine\n"},
    {"ExamplesReplaceNoSteps", "mkdir -p e/double_gyre; tavrin examples e", 3, "error: e/double_gyre: exists; use --force to replace existing files\n"},
    {"ExamplesAreForced", "mkdir e; echo mine >e/flow.vtu; tavrin examples --force e >/dev/null && cmp e/flow.vtu flow.vtu && tavrin examples --force e >/dev/null", 0, ""},

    // Messages
    {"LongName", R"(name=$(printf 'n%.0s' $(seq 3000)); tavrin info "$name.vtu" 2>&1 | wc -L >&2; operate "$name=1" -o out.vtu 2>&1 | wc -L >&2)", 0, "225\n320\n"},

    // Plug-ins
    {"PluginMissing", "tavrin --plugin nix.so --version && tavrin --plugin nix.so list >/dev/null", 0, "warning: plug-in nix.so: no such file\n"},
    {"PluginIsNoLibrary", "tavrin --plugin flow.vtu list 2>&1 >/dev/null | sed 's/: [^:]*$/: REASON/' >&2", 0, "warning: plug-in flow.vtu: REASON\n"},
    {"PluginFolderIsEmpty", "mkdir d; tavrin --plugin d list >/dev/null", 0, "warning: plug-in d: the folder holds no .so file\n"},
    {"PluginTwice", "cp \"$PLUGIN\" b.so; tavrin --plugin \"$PLUGIN\" --plugin b.so list 2>&1 >/dev/null | tail -n 1 >&2", 0, "algorithm \"Trial/LastWords\" already registered.\n"},
    {"PluginPath", "mkdir d; cp \"$PLUGIN\" d; TAVRIN_PLUGIN_PATH=:nix.so:d: tavrin list | grep -q Trial/Wait", 0, "warning: plug-in nix.so: no such file\n"},
    {"PluginFolder", "cp -r \"$LIBRARIES\" lib; cp \"$PLUGIN\" lib/tavrin/plugins/another.so; cp -r \"$LIBRARIES\"/../bin . && bin/tavrin list | grep -c -e Trial/Wait -e Field/Info >&2", 0, "2\n"},
    {"PluginExits", "HOSTILITY=exit tavrin --plugin \"$HOSTILE\" list >/dev/null", 0, "warning: plug-in HOSTILE: its initialization ends the process\n"},
    {"PluginExitsUnwatched", "trap '' CHLD; HOSTILITY=exit tavrin --plugin \"$HOSTILE\" list >/dev/null", 0, "warning: plug-in HOSTILE: its initialization ends the process\n"},
    {"PluginIsStale", "sed 's/libtavrin-lib.so.1/libtavrin-lib.so.0/' \"$PLUGIN\" >stale.so; tavrin --plugin stale.so list >/dev/null", 0, "warning: plug-in stale.so: built for interface version 0 of tavrin, and this is version 1; build it again\n"},
    {"PluginCrashes", "HOSTILITY=crash tavrin --plugin \"$HOSTILE\" list >/dev/null", 0, "warning: plug-in HOSTILE: its initialization crashes: Segmentation fault\n"},
    {"PluginThrows", "HOSTILITY=throw tavrin --plugin \"$HOSTILE\" list >/dev/null", 0, "warning: plug-in HOSTILE: its initialization throws an exception: no license found\n"},
    {"PluginHangs", "HOSTILITY=hang tavrin --plugin \"$HOSTILE\" list >/dev/null", 0, "warning: plug-in HOSTILE: its initialization does not return\n"},
    {"PluginHangsUntilInterrupt", "HOSTILITY=hang tavrin --plugin \"$HOSTILE\" list & sleep 0.5; kill -TERM $!; wait $!", 130, "interrupted\n"},
    {"TrustedPluginExits", "cp -r \"$LIBRARIES\" lib; cp \"$HOSTILE\" lib/tavrin/plugins/; cp -r \"$LIBRARIES\"/../bin . && HOSTILITY=exit bin/tavrin list", 1, "error: a plug-in ended the program\n"},
    {"AlgorithmExits", "tavrin --plugin \"$HOSTILE\" run Hostile/Exit --report report.json", 1, "error: a plug-in ended the program\n"},
    {"AlgorithmsThatCannotBeDeclared", "for command in list man; do tavrin --plugin \"$HOSTILE\" $command | grep -c 'Field/Info' | sed 's/[1-9][0-9]*/some/' >&2; done 2>&1 | sort >&2", 0, "some\nsome\nwarning: algorithm \"Hostile/Undeclarable\" left out: out of order\nwarning: algorithm \"Hostile/Unspeakable\" left out: its declaration throws an exception of unknown type\n"},
    {"OwnPluginMissing", "cp -r \"$LIBRARIES\"/../bin/tavrin . && mkdir lib && cp \"$LIBRARIES\"/*.so* . && ./tavrin list 2>&1 | sed 's/.*plugins/PLACE/' >&2", 0, "PLACE: no such file\n"},
        // clang-format on
};

/// Prints a case in messages of GoogleTest.
void PrintTo(const Case& row, std::ostream* stream)
{
    *stream << row.command;
}

constexpr const char* prelude = R"(
operate() { tavrin run 'Field/Tensor Field Operator' "$@"; }
trial() { name=$1; shift; tavrin --plugin "$PLUGIN" run "Trial/$name" "$@"; }
draw() { tavrin run 'Field/Show Hedgehogs' "$@" -o out.png >/dev/null || { code=$?; ls out.png 2>/dev/null; return $code; } }
started() { until test -e started; do sleep 0.02; done; }
)";

/// The text with HOSTILE in place of the path of that plug-in.
std::string withPlaceholders(std::string text)
{
    const std::string path = TAVRIN_HOSTILE_PLUGIN;
    for (auto at = text.find(path); at != std::string::npos; at = text.find(path))
        text.replace(at, path.size(), "HOSTILE");
    return text;
}

class Command : public testing::TestWithParam<Case>
{};

TEST_P(Command, EndsAsItShould)
{
    const Workshop workshop;
    const auto earlier = "an earlier result";
    workshop.write("out.vtu", earlier);
    workshop.write("report.json", earlier);

    const Outcome outcome = workshop.run(prelude + std::string(GetParam().command));

    EXPECT_EQ(outcome.exitCode, GetParam().exitCode);
    EXPECT_EQ(withPlaceholders(outcome.standardError), GetParam().standardError);
    EXPECT_EQ(workshop.temporaryFiles(), "");
    if (GetParam().exitCode == 0)
        return;
    EXPECT_EQ(workshop.read("out.vtu"), earlier);
    EXPECT_EQ(workshop.read("report.json"), earlier);
}

INSTANTIATE_TEST_SUITE_P(Cli, Command, testing::ValuesIn(cases),
                         [](const auto& row) { return std::string(row.param.name); });

}
