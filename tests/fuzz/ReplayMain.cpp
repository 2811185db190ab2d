// Feeds every file of the given corpus directories (or the given files) to the fuzz target's
// entry function, in name order, so that a corpus runs as an ordinary test. A check that fails
// inside the target aborts, which fails the test.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char* argv[]) {
    namespace fs = std::filesystem;
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        const fs::path given(argv[i]);
        if (fs::is_directory(given)) {
            for (const auto& entry : fs::directory_iterator(given))
                if (entry.is_regular_file())
                    inputs.push_back(entry.path());
        } else {
            inputs.push_back(given);
        }
    }
    std::sort(inputs.begin(), inputs.end());
    if (inputs.empty()) {
        std::fprintf(stderr, "no corpus files given\n");
        return 2;
    }
    for (const fs::path& input : inputs) {
        std::ifstream in(input, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        std::fprintf(stderr, "%s (%zu bytes)\n", input.c_str(), bytes.size());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs replayed\n", inputs.size());
    return 0;
}
