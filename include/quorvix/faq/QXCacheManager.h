#pragma once
/// @file
/// The on-disk answer store: one file per answer identifier.

#include <optional>
#include <string>
#include <string_view>

#include "quorvix/core/Json.h"

namespace quorvix {

/// The answer store, a set of class operations over the folder "QuorvixFolder"
/// under the platform's storage root. One file per answer, named by its
/// identifier exactly as given (a "/" addresses a subfolder); each file holds
/// an answer dictionary as JSON (what `archived` produces). Entries never
/// expire: the engine only reads them, the host stores them.
///
/// Identifiers that are empty, absolute, hold a ".." component or a NUL byte
/// are refused: they read as a miss and are never written. The store never
/// follows a symbolic link below its folder: a link, or a path through one,
/// reads as a miss and is never written through. Every name the filesystem
/// holds (up to 255 bytes a component) can be stored. File-system failures
/// are silent. Safe to use from several threads.
class QXCacheManager {
 public:
  /// The store's folder, "<storage root>/QuorvixFolder", made when it does not exist.
  static std::string cachePath();
  /// Writes `answer` (bytes, normally `archived(dictionary)`) as the file of
  /// `identifier`, replacing an earlier one; the file is written to a
  /// temporary name of its own (nothing of the identifier) and then renamed,
  /// so a reader never sees half a file; a link of that name is replaced.
  /// False when the identifier is refused or the write failed.
  static bool storeAnswerById(std::string_view identifier, std::string_view answer);
  /// The dictionary stored for `identifier`, or nothing when there is none or
  /// its file is not a JSON dictionary. A hit sets the file's modification
  /// time to now, recording the last use.
  static std::optional<JsonObject> answerById(std::string_view identifier);

  /// An instance value the class operations do not use.
  const std::optional<std::string>& instanceCachePath() const { return cachePath_; }
  /// Replaces `cachePath()`.
  void setCachePath(std::optional<std::string> path) { cachePath_ = std::move(path); }

 private:
  std::optional<std::string> cachePath_;
};

}  // namespace quorvix
