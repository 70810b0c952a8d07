#include "host/cli/program.h"

#include <OpenImageIO/imageio.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

Program::~Program() {
    if (process > 0) {
        kill(process, SIGKILL);
        wait();
    }
}

void Program::becomeProgram(const std::vector<std::string>& words) {
    const auto redirect = [](const std::string& file, int stream) {
        dup2(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), stream);
    };
    redirect(streams.file("out"), STDOUT_FILENO);
    redirect(streams.file("err"), STDERR_FILENO);
    pluginPath.empty() ? unsetenv("PELK_PLUGIN_PATH")
                       : setenv("PELK_PLUGIN_PATH", pluginPath.c_str(), 1);
    for (const char* ours : {"NO_COLOR", "PELK_NUM_THREADS", "PELK_USE_THREAD_AFFINITY"})
        unsetenv(ours);
    for (const auto& [name, value] : environment)
        setenv(name.c_str(), value.c_str(), 1);
    if (const rlimit limit{memory, memory}; memory > 0)
        setrlimit(RLIMIT_AS, &limit);
    std::vector<char*> arguments{const_cast<char*>("pelk")};
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const rlimit size{largestFile, RLIM_INFINITY};
    if (largestFile > 0)
        setrlimit(RLIMIT_FSIZE, &size);
    alarm(300);  // for it, as it outlives exec: whatever hangs falls
    if (fault && !letParentFollow())
        _exit(RunResult::kCannotFollow);
    if (chdir(directory.path.c_str()) == 0)
        execv(PELK_PROGRAM, arguments.data());
    _exit(126);
}

void Program::start(const std::vector<std::string>& words) {
    streams.write("out", "");  // or waitForOutput finds what another run said
    process = fork();
    if (process == 0)
        becomeProgram(words);
    ASSERT_GT(process, 0);
}

void Program::send(int signal) const {
    kill(process, signal);
}

bool Program::waitForOutput(const std::string& text) const {
    using namespace std::chrono;
    for (const auto end = steady_clock::now() + minutes(2); steady_clock::now() < end;) {
        if (streams.read("out").find(text) != std::string::npos)
            return true;
        std::this_thread::sleep_for(milliseconds(5));
    }
    return false;
}

RunResult Program::wait() {
    int status = 0;
    if (fault)
        status = follow(process, directory.path, *fault);
    else
        waitpid(process, &status, 0);
    process = -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, streams.read("out"), streams.read("err")};
}

std::string smallScene(const std::string& plugins) {
    return R"({
  "settings": {"width": 24, "height": 16, "samples": 2, "background": [1, 1, 1]},
  "plugins": {
    "camera": {"type": "CameraPerspective", "position": [0, 0, 1], "target": [0, 0, 0]},
    "matte": {"type": "MtlDiffuse", "diffuse": [0.5, 0.25, 0.125]},
    "square": {"type": "GeomQuad", "width": 9, "height": 9, "material": "matte"})" +
           plugins + "}}";
}

std::vector<float> readPicture(const std::string& file) {
    const auto input = OIIO::ImageInput::open(file);
    if (!input)
        return {};
    const OIIO::ImageSpec& spec = input->spec();
    const auto channels = static_cast<std::size_t>(spec.nchannels);
    const auto width = static_cast<std::size_t>(spec.full_width);
    std::vector<float> pixels(width * static_cast<std::size_t>(spec.full_height) * channels);
    const std::size_t first =
        static_cast<std::size_t>(spec.y) * width + static_cast<std::size_t>(spec.x);
    input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::FLOAT,
                      pixels.data() + first * channels, OIIO::AutoStride,
                      static_cast<OIIO::stride_t>(width * channels * sizeof(float)));
    return pixels;
}

RunResult CommandTest::render(const std::vector<std::string>& words) {
    std::vector<std::string> all{"render", "s.json"};
    all.insert(all.end(), words.begin(), words.end());
    return pelk.run(all);
}

std::map<std::string, std::string> CommandTest::content() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(directory.path)) {
        const std::string name = entry.path().filename().string();
        const bool isPlain = entry.symlink_status().type() == std::filesystem::file_type::regular;
        files[name] = isPlain ? directory.read(name) : "";
    }
    return files;
}

void CommandTest::expectRefused(const std::vector<std::string>& start,
                                const std::vector<Refusal>& refusals) {
    for (const Refusal& c : refusals) {
        SCOPED_TRACE(testing::PrintToString(c.words) + c.scene.substr(0, 500) + c.says);
        if (!c.scene.empty())
            directory.write("s.json", c.scene);
        std::vector<std::string> words = start;
        words.insert(words.end(), c.words.begin(), c.words.end());
        const auto before = content();
        const RunResult result = pelk.run(words);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_THAT(result.err,
                    testing::AllOf(testing::HasSubstr(c.says), testing::HasSubstr(c.place)));
        EXPECT_LT(result.err.size(), 1500u);
        if (!c.scene.empty()) {
            EXPECT_THAT(result.err, testing::HasSubstr("s.json"));
            EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
        }
        EXPECT_TRUE(content() == before) << "something was written";
    }
}
