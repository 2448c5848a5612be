#pragma once
/// @file
/// The reply of the latest `search` of this process, from which `report`
/// takes its hit (inside `shell`, where one process runs many commands).

#include <memory>
#include <string>

namespace quorvix {
class QXSearchResponse;
class SearchAnswer;
}  // namespace quorvix

namespace quorvix::cli {

/// Keeps the latest search reply. Thread-safe.
class LatestSearch {
 public:
  /// Replaces the kept reply.
  static void remember(std::shared_ptr<QXSearchResponse> response);
  /// The hit with that id in the kept reply, or nullptr (also when no search ran).
  static std::shared_ptr<SearchAnswer> hit(const std::string& resultId);
};

}  // namespace quorvix::cli
