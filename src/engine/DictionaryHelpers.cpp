// Helpers on dictionaries: the "context" wire form, JSON text, and the
// static configuration/FAQ address.
#include <boost/json/serialize.hpp>
#include <boost/json/serializer.hpp>
#include <boost/url/parse.hpp>
#include <cmath>

#include "engine/Helpers.h"
#include "engine/JsonParse.h"
#include "platform/Log.h"
#include "quorvix/platform/Platform.h"

namespace quorvix {
namespace {

bool allFinite(const Json& value) {
  switch (value.kind()) {
    case boost::json::kind::double_:
      return std::isfinite(value.get_double());
    case boost::json::kind::array:
      for (const auto& element : value.get_array()) {
        if (!allFinite(element)) return false;
      }
      return true;
    case boost::json::kind::object:
      for (const auto& entry : value.get_object()) {
        if (!allFinite(entry.value())) return false;
      }
      return true;
    default:
      return true;
  }
}

}  // namespace

std::string wrapped(const JsonObject& receiver) {
  std::string out;
  for (const auto& entry : receiver) {
    out.append(entry.key()).append(":").append(describe(entry.value())).append(",");
  }
  if (!out.empty()) out.pop_back();
  return out;
}

std::string asQuery(const JsonObject& receiver) {
  if (receiver.empty()) return {};
  const auto& first = *receiver.begin();
  return std::string(first.key()) + ":" + describe(first.value());
}

std::optional<std::string> inJSON(const JsonObject& receiver) { return detail::writeJsonObject(receiver, 0); }

namespace detail {

std::optional<std::string> writeJsonObject(const JsonObject& object, std::size_t sizeHint) {
  for (const auto& entry : object) {
    if (!allFinite(entry.value())) {
      logFormat("JSON not valid %@", "Invalid number value (NaN or infinity) in JSON write");
      return std::nullopt;
    }
  }
  // Written in chunks into text reserved once, instead of grown (and zeroed)
  // step by step: replies with megabytes of text are written whole.
  boost::json::serializer writer;
  writer.reset(&object);
  std::string out;
  out.reserve(sizeHint);
  char chunk[16384];
  while (!writer.done()) out.append(writer.read(chunk, sizeof chunk));
  return out;
}

}  // namespace detail

std::optional<std::string> faqURL(JsonObject& receiver) {
  const auto* account = receiver.if_contains("account");
  const auto* api = receiver.if_contains("api");
  if (account == nullptr || api == nullptr) return std::nullopt;

  const QXServiceHosts hosts = platform::serviceHosts();
  const std::string apiName = describe(*api);
  std::string url = hosts.scheme + "://" + hosts.fixedHost;
  if (hosts.port) url += ":" + std::to_string(*hosts.port);
  url += "/~" + describe(*account);
  url += apiName == "cnf" ? "/widget/scripts/" + apiName + ".json?" : "/api/faq/v1/" + apiName + ".js?";

  receiver.erase("api");
  for (const auto& entry : receiver) {
    url.append(entry.key()).append("=").append(describe(entry.value())).append("&");
  }
  url.pop_back();
  if (!boost::urls::parse_uri(url)) return std::nullopt;
  return url;
}

std::string archived(const JsonObject& receiver) { return boost::json::serialize(receiver); }

}  // namespace quorvix
