// Runs a fuzz target over files, for compilers without a fuzzing engine.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int count, char** names) {
    for (int i = 1; i < count; ++i) {
        std::ifstream file(names[i], std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", names[i]);
            return 1;
        }
        const std::vector<char> bytes((std::istreambuf_iterator<char>(file)),
                                      std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%d inputs replayed\n", count - 1);
    return count > 1 ? 0 : 1;
}
