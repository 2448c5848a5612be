#include "tool/Output.h"

#include <algorithm>
#include <cstdio>

#include <boost/json/serialize.hpp>

namespace quorvix::cli {
namespace {

constexpr std::size_t kColumnGap = 2;
constexpr std::string_view kIndent = "  ";

}  // namespace

std::string formatText(const TextResult& result) {
  std::size_t width = 0;
  for (const auto& row : result.rows) width = std::max(width, row.first.size());

  const std::string_view indent = result.heading.empty() ? std::string_view{} : kIndent;
  std::string text;
  if (!result.heading.empty()) text += result.heading + "\n";
  for (const auto& [label, value] : result.rows) {
    text += indent;
    text += label;
    if (!value.empty()) {
      text.append(width - label.size() + kColumnGap, ' ');
      text += value;
    }
    text += '\n';
  }
  return text;
}

std::string formatError(const QXError& error) {
  std::string text = "error: " + error.domain + " " + std::to_string(error.code) + "\n";
  for (const auto& [key, value] : error.userInfo) {
    text += std::string(kIndent) + key + ": " + value + "\n";
  }
  return text;
}

std::string errorMessage(const QXError& error) {
  for (const char* key : {"NSLocalizedDescription", "Description"}) {
    if (auto it = error.userInfo.find(key); it != error.userInfo.end() && !it->second.empty()) {
      return it->second;
    }
  }
  return error.domain + " " + std::to_string(error.code);
}

std::string formatSeconds(double seconds) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%g", seconds);
  return buffer;
}

void Output::result(const TextResult& text, const JsonObject& json) {
  if (json_) {
    console_.out(boost::json::serialize(json) + "\n");
  } else {
    console_.out(formatText(text));
  }
}

void Output::engineError(const QXError& error) {
  if (json_) {
    console_.out(boost::json::serialize(errorJson(error)) + "\n");
  } else {
    console_.err(formatError(error));
  }
}

void Output::timedOut(double seconds) { console_.err("no answer within " + formatSeconds(seconds) + " s\n"); }

void Output::message(std::string_view text) { console_.err("quorvix: " + std::string(text) + "\n"); }

}  // namespace quorvix::cli
