// Runs a fuzz target once on each file of the folders and files it is
// given, without libFuzzer: the test suite replays the seed corpora (and any
// crash inputs kept beside them) with the project's own build, sanitized or
// not. Exit 0 when every input ran; a fault aborts the process.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

int main(int argc, char** argv)
{
    if (LLVMFuzzerInitialize)
        LLVMFuzzerInitialize(&argc, &argv);
    std::vector<std::filesystem::path> inputs;
    for (int i = 1; i < argc; ++i) {
        std::filesystem::path const path(argv[i]);
        if (std::filesystem::is_directory(path)) {
            for (auto const& entry : std::filesystem::directory_iterator(path))
                if (entry.is_regular_file())
                    inputs.push_back(entry.path());
        } else {
            inputs.push_back(path);
        }
    }
    if (inputs.empty()) {
        std::fprintf(stderr, "usage: %s CORPUS_FOLDER|FILE...: no inputs\n", argv[0]);
        return 2;
    }
    for (auto const& input : inputs) {
        std::ifstream in(input, std::ios::binary);
        std::vector<std::uint8_t> const bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("%zu inputs replayed\n", inputs.size());
    return 0;
}
