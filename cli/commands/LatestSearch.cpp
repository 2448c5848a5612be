#include "commands/LatestSearch.h"

#include <mutex>

#include "quorvix/search/QXSearchResponse.h"

namespace quorvix::cli {
namespace {

struct Kept {
  std::mutex mutex;
  std::shared_ptr<QXSearchResponse> response;
};

Kept& kept() {
  static Kept instance;
  return instance;
}

}  // namespace

void LatestSearch::remember(std::shared_ptr<QXSearchResponse> response) {
  std::lock_guard lock(kept().mutex);
  kept().response = std::move(response);
}

std::shared_ptr<SearchAnswer> LatestSearch::hit(const std::string& resultId) {
  std::shared_ptr<QXSearchResponse> response;
  {
    std::lock_guard lock(kept().mutex);
    response = kept().response;
  }
  if (!response) return nullptr;
  for (const auto& answer : response->answerList()) {
    if (answer->resultId() == resultId) return answer;
  }
  return nullptr;
}

}  // namespace quorvix::cli
