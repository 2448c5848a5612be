#pragma once
/// @file
/// Remembers the vote the user gave each result.

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace quorvix {

/// The host's memory of like votes, by result identifier, so that a list can
/// show them again. The engine never writes to it. Safe to use from several threads.
class QXLikeStateHandler {
 public:
  /// Every vote kept, by result identifier (made empty on first read).
  std::map<std::string, bool> likeStates();
  /// Replaces `likeStates()`.
  void setLikeStates(std::map<std::string, bool> states);
  /// Keeps `state` for the result, replacing an earlier vote.
  void updateLikeState(bool state, std::string ForId);
  /// The vote kept for the result, or nothing.
  std::optional<bool> likeStateWithId(const std::string& identifier) const;
  /// Forgets every vote.
  void clear();

 private:
  mutable std::mutex mutex_;
  std::optional<std::map<std::string, bool>> likeStates_;
};

}  // namespace quorvix
