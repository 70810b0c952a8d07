#include "pelk/host/render/fingerprint.h"

#include <functional>

#include "host/render/render_fixture.h"

namespace Tarnkit {
namespace {

/// All that a fingerprint is made of, each to be changed by itself.
struct Origin {
    std::string settings = R"("time": 1, "samples": 4)";
    std::string diffuse = R"("diffuse": [0.5, 0.5, 0.5])";
    std::map<std::string, std::string> files{
        {"a.obj", "v 0 0 0\nmtllib  a b.mtl \nmtllib none.mtl\nmtllib " + std::string(300, 'n')},
        {"a b.mtl", "newmtl red"},
        {"b.gltf", R"({"buffers": [{}, {"uri": "data:,"}, {"uri": "b%20c.bin"}, {"uri": 1}]})"},
        {"b c.bin", "0123"},
    };
    std::vector<std::string> overrides;
    RenderOptions options;
    std::string version = "1", module;

    Origin() { options.width = 4; }
};

std::string fingerprint(const Origin& origin) {
    const TemporaryDirectory dir;
    for (const auto& [name, text] : origin.files)
        dir.write(name, text);
    dir.write("s.json", R"({"settings": {)" + origin.settings + R"(}, "plugins": {
        "red": {"type": "MtlDiffuse", )" +
                            origin.diffuse + R"(},
        "a": {"type": "GeomMesh", "file": "a.obj"}, "b": {"type": "GeomMesh", "file": "b.gltf"}}})");
    std::filesystem::copy(PELK_MODULE_DIR "/pelk_materials.so", dir.file("m.so"));
    std::ofstream(dir.file("m.so"), std::ios::app | std::ios::binary) << origin.module;
    HostSession session;
    session.loadModules(dir.path.string(), nullptr);
    std::string error;
    const auto scene = readScene(session, dir.file("s.json"), origin.overrides, error);
    EXPECT_TRUE(scene) << error;
    if (!scene)
        return error;
    const Fingerprint taken = fingerprintOf(*scene, origin.options, origin.version);
    return taken.error.empty() ? taken.digest.toText() : taken.error;
}

TEST(Fingerprint, TellsWhatDecidesOnPixelsFromWhatDoesNot) {
    const struct {
        const char* what;
        bool counts;
        std::function<void(Origin&)> change;
    } cases[] = {
        {"another directory", false, [](Origin&) {}},
        {"comments and blanks", false, [](Origin& o) { o.settings += "\n // why\n"; }},
        {"samples", false, [](Origin& o) { o.settings = R"("samples": 9, "time": 1)"; }},
        {"size by settings", false, [](Origin& o) { o.settings += R"(, "width": 9)"; }},
        {"threads, tiles, region", false,
         [](Origin& o) { o.options.threads = o.options.tileSize = o.options.region.x1 = 2; }},
        {"the time", true, [](Origin& o) { o.settings = R"("time": 2)"; }},
        {"a setting", true, [](Origin& o) { o.settings += R"(, "background": [1, 1, 0])"; }},
        {"a parameter", true, [](Origin& o) { o.diffuse = R"("diffuse": [0.5, 0.5, 0.6])"; }},
        {"an override", true, [](Origin& o) { o.overrides = {"red.diffuse=[1, 1, 1]"}; }},
        {"the size", true, [](Origin& o) { std::swap(o.options.width, o.options.height); }},
        {"a channel", true, [](Origin& o) { o.options.channels = {"depth"}; }},
        {"a mesh", true, [](Origin& o) { o.files["a.obj"] += "#"; }},
        {"a material library", true, [](Origin& o) { o.files["a b.mtl"] += "s"; }},
        {"one that was missing", true, [](Origin& o) { o.files["none.mtl"]; }},
        {"one in the place of a missing one", true, [](Origin& o) { o.files["a.mtl"]; }},
        {"a buffer", true, [](Origin& o) { o.files["b c.bin"] += "4"; }},
        {"a module", true, [](Origin& o) { o.module += "x"; }},
        {"the version", true, [](Origin& o) { o.version += "2"; }},
    };
    const std::string former = fingerprint({});
    for (const auto& c : cases) {
        Origin origin;
        c.change(origin);
        EXPECT_EQ(fingerprint(origin) != former, c.counts) << c.what;
    }
    Origin incomplete;
    incomplete.files.erase("b.gltf");
    EXPECT_NE(fingerprint(incomplete).find("b.gltf\": No such file"), std::string::npos);
}

}  // namespace
}  // namespace Tarnkit
