#include "quorvix/platform/ServiceHosts.h"

#include <algorithm>
#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>
#include <cctype>

#include "platform/HostNames.h"

namespace quorvix {
namespace {

QXError hostsError(long code, std::string description) {
  return QXError{errors::kEngineDomain, code, {{"Description", std::move(description)}}};
}

std::string lowered(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return out;
}

/// The loopback hosts plain http may name, as a person would write them in a URL.
constexpr std::string_view kLoopbackForms = "localhost, *.localhost, 127.0.0.1, [::1]";

// A host name, or an IPv6 address in brackets (as a URL holds it) or bare.
bool isServiceHost(std::string_view host) {
  if (detail::isHostName(host)) return true;
  if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
  return host.find(':') != std::string_view::npos &&
         std::all_of(host.begin(), host.end(), [](unsigned char c) { return std::isxdigit(c) || c == ':' || c == '.'; });
}

}  // namespace

bool isLoopbackHost(std::string_view host) {
  const std::string h = lowered(host);
  if (h == "localhost" || h == "127.0.0.1" || h == "::1" || h == "[::1]") return true;
  constexpr std::string_view kSuffix = ".localhost";
  return h.size() > kSuffix.size() && h.ends_with(kSuffix);
}

std::optional<QXError> QXServiceHosts::validate() const {
  if (scheme != "https" && scheme != "http") {
    return hostsError(errors::kUnsupportedServiceScheme, "The service scheme must be https (or http for a loopback host), not '" + scheme + "'");
  }
  if (fixedHost.empty()) return hostsError(errors::kBadServiceHosts, "The service host is empty");
  // Hosts are built by appending a suffix to a name: each suffix must be "."
  // and a host name, so nothing it holds can move a request elsewhere.
  if (!isServiceHost(fixedHost)) return hostsError(errors::kBadServiceHosts, "Not a host name: '" + fixedHost + "'");
  for (const std::string* suffix : {&mainSuffix, &secondSuffix}) {
    if (!suffix->starts_with('.') || !detail::isHostName(std::string_view(*suffix).substr(1))) {
      return hostsError(errors::kBadServiceHosts, "A host suffix is '.' and a host name, not '" + *suffix + "'");
    }
  }
  if (port && (*port < 1 || *port > 65535)) return hostsError(errors::kBadServiceHosts, "The service port is out of range");
  if (scheme == "http") {
    for (const std::string& host : {fixedHost, "ACCOUNT" + secondSuffix, "SERVER" + mainSuffix}) {
      if (!isLoopbackHost(host)) {
        return hostsError(errors::kUnsupportedServiceScheme, "Plain http is only for loopback hosts (" + std::string(kLoopbackForms) +
                                                       "); " + host + " is not one, so it needs https");
      }
    }
  }
  return std::nullopt;
}

std::variant<QXServiceHosts, QXError> QXServiceHosts::fromServiceBase(std::string_view base) {
  auto parsed = boost::urls::parse_absolute_uri(base);
  if (!parsed) return hostsError(errors::kBadServiceHosts, "Not a service base URL: " + std::string(base));
  const boost::urls::url_view url = *parsed;
  if (!url.has_authority() || url.host().empty() || url.has_userinfo() || url.has_query() || url.has_fragment() ||
      !(url.path().empty() || url.path() == "/")) {
    return hostsError(errors::kBadServiceHosts, "A service base is scheme://HOST[:PORT] only: " + std::string(base));
  }
  QXServiceHosts hosts;
  hosts.scheme = lowered(url.scheme());
  // An IPv6 address keeps its brackets ("[::1]"): the host is written into URLs as it is.
  const std::string host = lowered(url.host());
  hosts.fixedHost = host;
  // Names go under a name; an address has none under it. Account and server
  // hosts of a loopback address go under "localhost", which libcurl resolves
  // to this machine whatever comes before it.
  const bool address = url.host_type() == boost::urls::host_type::ipv4 || url.host_type() == boost::urls::host_type::ipv6;
  const std::string parent = address && isLoopbackHost(host) ? "localhost" : host;
  hosts.mainSuffix = "." + parent;
  hosts.secondSuffix = "." + parent;
  if (url.has_port()) {
    if (url.port().empty() || url.port().size() > 5) return hostsError(errors::kBadServiceHosts, "Bad port in " + std::string(base));
    hosts.port = static_cast<int>(url.port_number());
  }
  if (auto error = hosts.validate()) return *error;
  return hosts;
}

}  // namespace quorvix
