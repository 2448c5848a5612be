#include "tool/Console.h"

#include <array>
#include <ostream>

namespace quorvix::cli {
namespace {

constexpr std::array<std::string_view, 10> kFrames = {"⠋", "⠙", "⠹", "⠸", "⠼", "⠴", "⠦", "⠧", "⠇", "⠏"};
constexpr std::chrono::milliseconds kFrameInterval{100};
// Carriage return, then erase to the end of the line.
constexpr std::string_view kEraseLine = "\r\033[K";

}  // namespace

Console::Console(std::ostream& out, std::ostream& err, TerminalInfo terminal)
    : out_(&out), err_(&err), terminal_(terminal) {}

void Console::out(std::string_view text) {
  std::lock_guard lock(mutex_);
  if (!out_) return;
  clearSpinnerLocked();
  *out_ << text;
  out_->flush();
}

void Console::err(std::string_view text) {
  std::lock_guard lock(mutex_);
  if (!err_) return;
  clearSpinnerLocked();
  *err_ << text;
  err_->flush();
}

void Console::logLine(std::string_view line) {
  std::lock_guard lock(mutex_);
  if (!err_) return;
  clearSpinnerLocked();
  *err_ << line << '\n';
  err_->flush();
}

void Console::spinnerTick(std::chrono::steady_clock::duration waited) {
  if (!terminal_.stdoutIsTerminal || waited < kSpinnerAfter) return;
  std::lock_guard lock(mutex_);
  if (!out_) return;
  const auto now = std::chrono::steady_clock::now();
  if (spinnerShown_ && now - lastFrame_ < kFrameInterval) return;
  lastFrame_ = now;
  *out_ << kEraseLine << kFrames[spinnerFrame_] << " waiting for the service";
  spinnerFrame_ = (spinnerFrame_ + 1) % kFrames.size();
  out_->flush();
  spinnerShown_ = true;
}

void Console::spinnerClear() {
  std::lock_guard lock(mutex_);
  clearSpinnerLocked();
}

void Console::detach() {
  std::lock_guard lock(mutex_);
  clearSpinnerLocked();
  if (out_) out_->flush();
  if (err_) err_->flush();
  out_ = nullptr;
  err_ = nullptr;
}

void Console::clearSpinnerLocked() {
  if (!spinnerShown_) return;
  spinnerShown_ = false;
  if (!out_) return;
  *out_ << kEraseLine;
  out_->flush();
}

}  // namespace quorvix::cli
