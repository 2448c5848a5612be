#include "quorvix/faq/QXCacheManager.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>
#include <unistd.h>

#include "engine/JsonParse.h"
#include "quorvix/platform/Platform.h"

namespace quorvix {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFolderName = "QuorvixFolder";

/// Whether the identifier may name a file inside the store.
bool acceptable(std::string_view identifier) {
  if (identifier.empty() || identifier.front() == '/' || identifier.find('\0') != std::string_view::npos) return false;
  for (const auto& component : fs::path(identifier)) {
    if (component == "..") return false;
  }
  return true;
}

std::optional<fs::path> fileFor(std::string_view identifier) {
  if (!acceptable(identifier)) return std::nullopt;
  return fs::path(QXCacheManager::cachePath()) / fs::path(identifier);
}

}  // namespace

std::string QXCacheManager::cachePath() {
  const fs::path folder = fs::path(platform::storageRoot()) / kFolderName;
  std::error_code ignored;
  if (!fs::exists(folder, ignored)) {
    // The storage root itself may not exist yet on a fresh machine; the store's
    // own folder is made without anything deeper.
    fs::create_directories(folder.parent_path(), ignored);
    fs::create_directory(folder, ignored);
  }
  return folder.string();
}

bool QXCacheManager::storeAnswerById(std::string_view identifier, std::string_view answer) {
  const std::optional<fs::path> file = fileFor(identifier);
  if (!file) return false;
  static std::atomic<unsigned> counter{0};
  fs::path temporary = *file;
  temporary += ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter.fetch_add(1));
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out.write(answer.data(), static_cast<std::streamsize>(answer.size()));
    out.close();
    if (!out) {
      std::error_code ignored;
      fs::remove(temporary, ignored);
      return false;
    }
  }
  std::error_code error;
  fs::rename(temporary, *file, error);
  if (error) {
    std::error_code ignored;
    fs::remove(temporary, ignored);
    return false;
  }
  return true;
}

std::optional<JsonObject> QXCacheManager::answerById(std::string_view identifier) {
  const std::optional<fs::path> file = fileFor(identifier);
  if (!file) return std::nullopt;
  std::error_code error;
  if (!fs::is_regular_file(*file, error)) return std::nullopt;
  std::ifstream in(*file, std::ios::binary);
  if (!in) return std::nullopt;
  const std::string contents{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  in.close();
  fs::last_write_time(*file, fs::file_time_type::clock::now(), error);
  auto parsed = detail::parseJson(contents);
  if (auto* value = std::get_if<Json>(&parsed); value != nullptr && value->is_object()) {
    return std::move(value->get_object());
  }
  return std::nullopt;
}

}  // namespace quorvix
