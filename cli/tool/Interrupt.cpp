#include "tool/Interrupt.h"

#include <algorithm>
#include <csignal>
#include <thread>

namespace quorvix::cli {
namespace {

volatile std::sig_atomic_t gCaught = 0;
struct sigaction gPreviousInt {};
struct sigaction gPreviousTerm {};

constexpr std::chrono::milliseconds kSlice{50};

void onInterrupt(int) { gCaught = 1; }

}  // namespace

InterruptCatcher::InterruptCatcher() {
  gCaught = 0;
  struct sigaction action {};
  action.sa_handler = onInterrupt;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, &gPreviousInt);
  sigaction(SIGTERM, &action, &gPreviousTerm);
}

InterruptCatcher::~InterruptCatcher() {
  sigaction(SIGINT, &gPreviousInt, nullptr);
  sigaction(SIGTERM, &gPreviousTerm, nullptr);
}

bool InterruptCatcher::caught() const { return gCaught != 0; }

bool InterruptCatcher::sleepFor(std::chrono::steady_clock::duration duration) const {
  const auto deadline = std::chrono::steady_clock::now() + duration;
  while (!caught()) {
    const auto now = std::chrono::steady_clock::now();
    if (now >= deadline) return true;
    std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(kSlice, deadline - now));
  }
  return false;
}

void InterruptCatcher::waitForSignal() const {
  while (!caught()) std::this_thread::sleep_for(kSlice);
}

}  // namespace quorvix::cli
