// Runs one fuzz target's entry point over every file of the given folders (the
// seed corpus and the crashes found so far), without libFuzzer. A crash, a
// sanitizer report or an uncaught exception fails the run; a missing folder is
// an empty one, so a target without findings needs no placeholder file.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#define X(name) extern "C" int quorvixFuzz_##name(const uint8_t* data, size_t size);
QUORVIX_FUZZ_TARGETS
#undef X

namespace {

struct Target {
  std::string_view name;
  int (*entry)(const uint8_t*, size_t);
};

#define X(name) Target{#name, quorvixFuzz_##name},
constexpr Target kTargets[] = {QUORVIX_FUZZ_TARGETS};
#undef X

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s TARGET [FOLDER...]\n", argv[0]);
    return 2;
  }
  const std::string_view wanted = argv[1];
  const auto target = std::find_if(std::begin(kTargets), std::end(kTargets),
                                   [&](const Target& candidate) { return candidate.name == wanted; });
  if (target == std::end(kTargets)) {
    std::fprintf(stderr, "unknown fuzz target: %s\n", argv[1]);
    return 2;
  }
  std::vector<std::filesystem::path> files;
  for (int i = 2; i < argc; ++i) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(argv[i], error)) {
      if (entry.is_regular_file() && entry.path().filename().string().front() != '.') files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    std::ifstream in(file, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::fprintf(stderr, "%s: %s (%zu bytes)\n", argv[1], file.filename().c_str(), bytes.size());
    target->entry(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  }
  std::printf("%s: %zu inputs replayed\n", argv[1], files.size());
  return files.empty() ? 1 : 0;
}
