#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "host/cli/program.h"

using testing::AllOf;
using testing::HasSubstr;

namespace {

namespace fs = std::filesystem;

const std::string kTriangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

std::string with(const std::string& type, const std::string& parameters) {
    return smallScene(", \"x\": {\"type\": \"" + type + "\", " + parameters + "}");
}

std::string gltf(const std::string& buffer, const std::string& required = "") {
    return R"({"asset": {"version": "2.0"}, "extensionsRequired": [)" + required +
           R"(], "buffers": [{"uri": ")" + buffer + R"(", "byteLength": 36}],
        "bufferViews": [{"buffer": 0, "byteLength": 36}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}],
        "nodes": [{"mesh": 0}], "scenes": [{"nodes": [0]}], "scene": 0})";
}

using HostileFiles = CommandTest;

TEST_F(HostileFiles, PipesDirectoriesAndRingsAreRefusedWhereverAFileIsRead) {
    const std::pair<std::string, const char*> kinds[] = {
        {"pipe", "it is a pipe"}, {"folder", "it is a directory"}, {"ring", "symbolic links"}};
    constexpr char kMtl[] = R"("file": "mtl.obj")", kBin[] = R"("file": "bin.gltf")";
    mkfifo(directory.file("pipe").c_str(), 0600);
    fs::create_directory(directory.file("folder"));
    fs::create_symlink("ring", directory.file("ring"));
    for (const auto& [kind, says] : kinds) {
        for (const char* ending : {".obj", ".mtl", ".bin", ".png", ".so"})
            fs::create_symlink(kind, directory.file(kind + ending));
        directory.write("mtl.obj", "mtllib " + kind + ".mtl\n" + kTriangle);
        directory.write("bin.gltf", gltf(kind + ".bin"));
        const std::string place = "/plugins/x: ", file = "\"file\": \"" + kind;
        expectRefused({"render"},
                      {{{"s.json"}, 1, says, place, with("GeomMesh", file + ".obj\"")},
                       {{"s.json"}, 1, says, place, with("TexImage", file + ".png\"")},
                       {{"s.json"}, 1, says, place, with("GeomMesh", kMtl)},
                       {{"s.json"}, 1, says, place, with("GeomMesh", kBin)},
                       {{kind, "-o", "a.png"}, 1, "pelk: " + kind + ": the scene can't be read"}});
    }
    pelk.pluginPath = directory.path.string();
    EXPECT_THAT(pelk.run({"list"}).out,
                AllOf(HasSubstr("pipe.so: it is a pipe"), HasSubstr("ring.so: Too many")));
}

TEST_F(HostileFiles, EachIsToldInOneShortLineWithItsPlaceAndAnOlderPictureSurvives) {
    const std::string endless(1 << 20, '1');
    directory.write("a.exr", "older");
    directory.write("cut.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 7\n");
    directory.write("cut.png", "\x89PNG\r\n\x1a\n");
    directory.write("dust.ply",
                    "ply\nformat ascii 1.0\nelement dust 4000000000000000000\n"
                    "end_header\n");
    directory.write("packed.gltf", gltf("b.bin", R"("KHR_texture_basisu", "EXT_packed")"));
    directory.write("deep.gltf", std::string(1 << 20, '[') + std::string(1 << 20, ']'));
    const std::string nothing(200, '\0');
    directory.write("huge.hdr", "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 900000 +X 9\n" + nothing);
    directory.write("huge.pfm", "PF\n900000 900000\n-1.0\n" + nothing);
    directory.write("full.tga",
                    std::string("\0\0\2\0\0\0\0\0\0\0\0\0\0\x40\0\x40\x20\x8", 18) + nothing);
    directory.write("film.avi", nothing);
    const struct {
        std::string scene;
        const char *says, *place = "";
    } cases[] = {
        {"{\n  \"plugins\": [1,,2]\n}", "s.json:2:17"},
        {with("MtlDifuse", R"("a": 1)"), "\"MtlDiffuse\"", "/plugins/x/type"},
        {with("MtlDiffuse", R"("difuse": 1)"), "\"diffuse\"", "/x/difuse"},
        {with("MtlDiffuse", R"("diffuse": "red")"), "red", "/x/diffuse"},
        {with("MtlSingleBRDF", R"("brdf": "mate")"), "\"matte\"", "/x/brdf"},
        {with("MtlSingleBRDF", R"("brdf": "x")"), "loop", "x -> x"},
        {with("GeomMesh", R"("file": "none.obj")"), "none.obj", "/x"},
        {with("GeomMesh", R"("file": "cut.obj")"), "cut.obj", "/x"},
        {with("TexImage", R"("file": "huge.hdr")"), "9 x 900000 pixels with 3 channels; expected"},
        {with("TexImage", R"("file": "huge.pfm")"), "900000 pixels with 3 channels; expected at"},
        {with("TexImage", R"("file": "full.tga")"), "which can't be in 218 bytes"},
        {with("TexImage", R"("file": "film.avi")"), "an image file ends in .exr, .png"},
        {with("GeomMesh", R"("file": "dust.ply")"), "\"dust\" have no properties"},
        {with("GeomMesh", R"("file": "packed.gltf")"), "requires the extension \"EXT_packed\""},
        {with("GeomMesh", R"("file": "deep.gltf")"), "nested too deeply"},
        {with("TexImage", R"("file": "none.png")"), "none.png", "/x"},
        {with("TexImage", R"("file": "cut.png")"), "cut.png", "/x"},
        {with("GeomSphere", "\"radius\": 1" + endless), "/s.json:6:"},
        {with("Geom" + endless, R"("a": 1)"), "/plugins/x/type: there is no plug-in \"Geom111"},
        {with(R"(Geom\n\u001b[2J\u009b)", R"("a": 1)"), R"("Geom\n\x1b[2J\x9b")"},
        {with("GeomSphere", R"("segments": 12.5)"), "expected a whole number"},
        {with("GeomSphere", R"("scale": [1, 1, 3e38])"), "/plugins/x: a vertex lies 1e18 or more"},
        {with("BSDFGlass", R"("ior": 0)"), "/plugins/x/ior: expected a number from 0.1 to 100"},
        {with("BRDFGlossy", R"("tail": {"times": [0, 1], "values": [1, 11]})"), "tail/values/1: "},
        {with("TexNoise", R"("octaves": 17)"), "expected a number from 1 to 16, not 17"},
    };
    for (const auto& c : cases)
        expectRefused({"render", directory.file("s.json")},
                      {{{"-o", "a.exr"}, 1, c.says, c.place, c.scene}});
    // What would move the cursor must not reach a terminal.
    expectRefused({"render"},
                  {{{"\x1b[2J.json"}, 1, "pelk: \\x1b[2J.json: the scene can't be read: No"}});
}

TEST_F(HostileFiles, AnOutputThatIsAnInputIsRefused) {
    const std::string scene = smallScene(R"(,
        "picture": {"type": "TexImage", "file": "t.png"},
        "mesh": {"type": "GeomMesh", "file": "m.obj"}, "more": {"type": "GeomMesh", "file": "m.gltf"})");
    ASSERT_EQ(render({"-o", "t.png"}).exitCode, 0);
    directory.write("s.png", scene);
    directory.write("m.obj", "mtllib m.png\n" + kTriangle);
    directory.write("m.png", "newmtl a\n");
    directory.write("m.gltf", gltf("b.exr"));
    directory.write("b.exr", std::string(35, '\0') + "@");
    fs::create_symlink("t.png", directory.file("link.png"));
    fs::create_hard_link(directory.file("t.png"), directory.file("twin.png"));
    for (const std::string name :
         {"s.png", "t.png", "./t.png", "link.png", "twin.png", "m.png", "b.exr"})
        expectRefused({"render", "s.png", "-o"},
                      {{{name}, 2, "\"" + name + "\" would replace \""}});
    EXPECT_EQ(pelk.run({"render", "s.png", "-o", "a.png"}).exitCode, 0);
}

TEST_F(HostileFiles, ScenesReadNothingOutsideOfTheirFolderIfConfined) {
    fs::create_directory(directory.file("in"));
    directory.write("m.obj", kTriangle);
    directory.write("in/own.obj", kTriangle);
    pelk.environment["AWAY"] = directory.path;
    directory.write("in/s.json", with("GeomMesh", R"("file": "${AWAY}/m.obj")"));
    EXPECT_THAT(pelk.run({"probe", "--pixel", "3,3", "--confine", "in/s.json"}).err,
                HasSubstr("/plugins/x/file: \"" + directory.file("m.obj") + "\": it lies outside"));
    EXPECT_EQ(pelk.run({"render", "in/s.json", "--confine", ".", "-o", "a.png"}).exitCode, 0);
    directory.write("in/s.json", with("GeomMesh", R"("file": "../in/own.obj")"));
    EXPECT_EQ(pelk.run({"render", "in/s.json", "-o", "a.png", "--confine"}).exitCode, 0);
}

TEST_F(HostileFiles, DebugLogsAndPluginsStandWhereTheyMay) {
    pelk.environment["TMPDIR"] = directory.path;
    directory.write("s.json", smallScene());
    mkfifo(directory.file("pelk_dbg_log_1").c_str(), 0600);
    fs::create_symlink("s.json", directory.file("pelk_dbg_log_2"));
    for (const char* log : {"1", "2"})
        EXPECT_THAT(pelk.run({"render", "s.json", "--debug-log", log}).err,
                    AllOf(HasSubstr("cannot write the debug log"), HasSubstr("it is ")));
    EXPECT_EQ(directory.read("s.json"), smallScene());
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(pelk.run({"render", "s.json", "--debug-log", "3"}).exitCode, 0) << i;
    fs::create_symlink("pelk_dbg_log_3", directory.file("log.png"));
    EXPECT_EQ(pelk.run({"render", "s.json", "-o", "log.png", "--debug-log", "3"}).exitCode, 2);

    fs::create_directory(directory.file("plugins"));
    fs::permissions(directory.file("plugins"), fs::perms::all);
    pelk.pluginPath = directory.file("plugins");
    EXPECT_THAT(pelk.run({"list"}).out, HasSubstr("plugins: anyone may write to it"));
    fs::permissions(directory.file("plugins"), fs::perms::owner_all);
    directory.write("plugins/a.so", "");
    fs::permissions(directory.file("plugins/a.so"), fs::perms::all);
    EXPECT_THAT(pelk.run({"list"}).out, HasSubstr("a.so: anyone may write to it"));
}

TEST_F(HostileFiles, StreamsOfTheCallerAreScenesAndItMayLeaveBeforeThePicture) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string scene = smallScene(R"(, "ball": {"type": "GeomSphere", "segments": 1.2e1})");
    ASSERT_EQ(write(ends[1], scene.data(), scene.size()), std::ssize(scene));
    close(ends[1]);
    const std::string stream = "/dev/fd/" + std::to_string(ends[0]);
    EXPECT_THAT(pelk.run({"render", stream}).err, HasSubstr("expected --output"));
    const std::vector<std::string> words{"render", stream, "-o", "a.png"};
    EXPECT_EQ(pelk.run(words).exitCode, 0);
    close(ends[0]);
    EXPECT_EQ(pelk.run(words).exitCode, 1) << "nothing is open there";

    const std::string command = "cd " + directory.path.string() +
                                " && " PELK_PROGRAM
                                " render - -o b.png --progress json < s.json | true";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_TRUE(fs::exists(directory.file("b.png")));
}

}  // namespace
