// Answer ids from the service turned into paths of the answer store, written
// and read back under a storage root of the fuzzer's own.

#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "FuzzInput.h"
#include "quorvix/faq/QXCacheManager.h"
#include "quorvix/platform/Platform.h"

namespace {

std::filesystem::path& storageRoot() {
  static std::filesystem::path root;
  return root;
}

void removeStorageRoot() {
  std::error_code ignored;
  std::filesystem::remove_all(storageRoot(), ignored);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace quorvix;
  static const bool ready = [] {
    std::string pattern = (std::filesystem::temp_directory_path() / "quorvix-fuzz-store-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    storageRoot() = pattern;
    std::atexit(removeStorageRoot);
    platform::setStorageRoot(pattern);
    return true;
  }();
  (void)ready;
  static unsigned runs = 0;

  // First line: the answer id; the rest: what is stored for it.
  const auto parts = fuzz::pieces(fuzz::text(data, size), 2);
  const std::string store = QXCacheManager::cachePath();
  if (QXCacheManager::storeAnswerById(parts[0], parts[1])) {
    (void)QXCacheManager::answerById(parts[0]);
    // Nothing may land outside the store.
    std::error_code error;
    const auto written =
        std::filesystem::weakly_canonical(std::filesystem::path(store) / std::string(parts[0]), error);
    const auto base = std::filesystem::weakly_canonical(store, error);
    if (!error && written.string().compare(0, base.string().size(), base.string()) != 0) std::abort();
  } else {
    (void)QXCacheManager::answerById(parts[0]);
  }
  // Keep the disk small over millions of runs.
  if (++runs % 512 == 0) {
    std::error_code ignored;
    std::filesystem::remove_all(store, ignored);
  }
  return 0;
}
