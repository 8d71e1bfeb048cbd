// Runs a target on files, and on all files of folders: what the fuzzing engine does with an input,
// without the engine. Fails where a name given has no file.
//
// Files are read by way of libc alone, so that the memory sanitizer sees what is written.
#include <dirent.h>
#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

namespace {

// Numbers of files: one, or those of a folder; 0 when something cannot be read.
std::size_t run(const std::string& name);

std::size_t runFile(const std::string& name, std::size_t size) {
    std::printf("%s\n", name.c_str());
    std::fflush(stdout);
    std::FILE* file = std::fopen(name.c_str(), "rb");
    if (!file) return 0;
    // Exactly as large as the input, for the address sanitizer.
    const auto input = std::make_unique<uint8_t[]>(size);
    const bool whole = std::fread(input.get(), 1, size, file) == size;
    std::fclose(file);
    if (whole) LLVMFuzzerTestOneInput(input.get(), size);
    return whole;
}

std::size_t runFolder(const std::string& name) {
    DIR* folder = opendir(name.c_str());
    if (!folder) return 0;
    std::size_t inputs = 0;
    while (const dirent* entry = readdir(folder)) {
        if (entry->d_name[0] != '.') inputs += run(name + '/' + entry->d_name);
    }
    closedir(folder);
    return inputs;
}

std::size_t run(const std::string& name) {
    struct stat status {};
    if (stat(name.c_str(), &status) != 0) return 0;
    if (S_ISDIR(status.st_mode)) return runFolder(name);
    return runFile(name, static_cast<std::size_t>(status.st_size));
}

}  // namespace

int main(int count, char** names) {
    std::size_t inputs = 0;
    for (int i = 1; i < count; ++i) {
        const std::size_t found = run(names[i]);
        if (found == 0) {
            std::fprintf(stderr, "%s: no input that can be read\n", names[i]);
            return 1;
        }
        inputs += found;
    }
    std::printf("%zu inputs\n", inputs);
    return inputs == 0;
}
