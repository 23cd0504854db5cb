// Feeds a fuzz target every file of the folders it is given, as libFuzzer
// would, for builds without libFuzzer: the seeds and past findings become
// regression cases. Exits 0 when every input passed (a finding aborts).
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    LLVMFuzzerInitialize(&argc, &argv);
    int inputs = 0;
    for (int a = 1; a < argc; ++a) {
        std::error_code ec;
        if (!fs::is_directory(argv[a], ec)) continue;
        for (const auto& entry : fs::recursive_directory_iterator(argv[a], ec)) {
            if (!entry.is_regular_file()) continue;
            std::ifstream in(entry.path(), std::ios::binary);
            std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
            std::printf("%s\n", entry.path().c_str());
            std::fflush(stdout);
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++inputs;
        }
    }
    std::printf("%d inputs passed\n", inputs);
    return inputs > 0 ? 0 : 1;
}
