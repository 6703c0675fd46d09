// The main of the fuzz targets in builds without libFuzzer: runs LLVMFuzzerTestOneInput once on
// every file named on the command line or found (recursively) in a folder named there, so the
// targets compile and replay their seed corpus and regression inputs as ordinary tests. A
// folder that does not exist is skipped; finding no input at all is a failure.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

void Collect(const fs::path& path, std::vector<fs::path>& files) {
    std::error_code error;
    if (fs::is_regular_file(path, error)) {
        files.push_back(path);
        return;
    }
    if (!fs::is_directory(path, error)) return;
    for (fs::recursive_directory_iterator it(path, error), end; !error && it != end; it.increment(error))
        if (it->is_regular_file(error)) files.push_back(it->path());
}

} // namespace

int main(int argc, char** argv) {
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) Collect(argv[i], files);
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        std::fprintf(stderr, "no input files found\n");
        return 1;
    }
    for (const fs::path& file : files) {
        std::ifstream stream(file, std::ios::binary);
        if (!stream) {
            std::fprintf(stderr, "cannot read %s\n", file.c_str());
            return 1;
        }
        const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        std::fprintf(stderr, "replaying %s (%zu bytes)\n", file.c_str(), bytes.size());
        // A copy of exactly the input's size, as libFuzzer hands it over (never a null pointer).
        static const uint8_t kNothing = 0;
        const std::vector<uint8_t> input(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(input.empty() ? &kNothing : input.data(), input.size());
    }
    std::printf("%zu inputs replayed\n", files.size());
    return 0;
}
