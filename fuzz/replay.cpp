// Executes the inputs in the files and folders that it is given, without a fuzzer: for the tests, with any compiler's
// sanitizers. Prints how many there were.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" [[gnu::weak]] int LLVMFuzzerInitialize(int* count, char*** arguments);  // only some have it
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> files_in(const fs::path& path)
{
    if (!fs::is_directory(path))
        return {path};
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator{path})
        files.push_back(entry.path());
    return files;
}

void replay(const fs::path& file)
{
    std::ifstream stream{file, std::ios::binary};
    const std::vector<char> bytes{std::istreambuf_iterator{stream}, {}};
    std::fprintf(stderr, "--- %s\n", file.c_str());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int count, char** arguments)
{
    if (LLVMFuzzerInitialize)
        LLVMFuzzerInitialize(&count, &arguments);
    size_t replayed = 0;
    for (int i = 1; i < count; ++i)
        for (const fs::path& file : files_in(arguments[i])) {
            replay(file);
            ++replayed;
        }
    std::printf("%zu inputs replayed\n", replayed);
}
