#include "quorvix/faq/QXCacheManager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

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

// A file descriptor closed when it goes.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      reset();
      fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { reset(); }
  int get() const { return fd_; }
  int release() { return std::exchange(fd_, -1); }
  explicit operator bool() const { return fd_ >= 0; }

 private:
  void reset() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
  }
  int fd_;
};

// The folder that holds an identifier's file, opened below the store's root
// without following any symbolic link, and the file's own name in it.
struct Place {
  Descriptor folder;
  std::string name;
};

std::optional<Place> placeOf(std::string_view identifier) {
  if (!acceptable(identifier)) return std::nullopt;
  const std::string root = QXCacheManager::cachePath();
  Place place{Descriptor(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)), {}};
  if (!place.folder) return std::nullopt;
  std::string_view rest = identifier;
  for (auto slash = rest.find('/'); slash != std::string_view::npos; slash = rest.find('/')) {
    const std::string component(rest.substr(0, slash));
    rest.remove_prefix(slash + 1);
    if (component.empty()) continue;
    Descriptor next(::openat(place.folder.get(), component.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!next) return std::nullopt;
    place.folder = std::move(next);
  }
  if (rest.empty() || rest == ".") return std::nullopt;
  place.name = std::string(rest);
  return place;
}

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
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
  auto place = placeOf(identifier);
  if (!place) return false;
  const int folder = place->folder.get();
  // The temporary name has nothing of the identifier, so every name the
  // filesystem holds can be stored; the rename replaces a link, never follows it.
  static std::atomic<unsigned> counter{0};
  std::string temporary;
  Descriptor file;
  for (int attempt = 0; attempt < 8 && !file; ++attempt) {
    temporary = ".quorvix-" + std::to_string(::getpid()) + "-" + std::to_string(counter.fetch_add(1)) + ".tmp";
    file = Descriptor(::openat(folder, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
  }
  if (!file) return false;
  const bool written = writeAll(file.get(), answer);
  const bool closed = ::close(file.release()) == 0;
  if (!written || !closed || ::renameat(folder, temporary.c_str(), folder, place->name.c_str()) != 0) {
    ::unlinkat(folder, temporary.c_str(), 0);
    return false;
  }
  return true;
}

std::optional<JsonObject> QXCacheManager::answerById(std::string_view identifier) {
  auto place = placeOf(identifier);
  if (!place) return std::nullopt;
  Descriptor file(::openat(place->folder.get(), place->name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  std::string contents;
  char buffer[16384];
  for (;;) {
    const ssize_t got = ::read(file.get(), buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    contents.append(buffer, static_cast<std::size_t>(got));
  }
  // A hit records its use as the file's modification time.
  ::futimens(file.get(), nullptr);
  auto parsed = detail::parseJson(contents);
  if (auto* value = std::get_if<Json>(&parsed); value != nullptr && value->is_object()) {
    return std::move(value->get_object());
  }
  return std::nullopt;
}

}  // namespace quorvix
