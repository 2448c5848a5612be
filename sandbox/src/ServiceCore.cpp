#include "ServiceCore.h"

#include <httplib.h>

#include <exception>
#include <optional>
#include <string>
#include <thread>

#include "RequestDecoding.h"
#include "endpoints/Endpoints.h"

namespace quorvix::sandbox {

namespace {

void send(const Reply& reply, httplib::Response& response) {
  response.status = reply.status;
  response.set_content(reply.body, reply.contentType);
}

/// Announces a body, then fails to produce it: httplib closes the connection
/// after the header, so the client sees a truncated answer.
void dropConnection(httplib::Response& response) {
  response.status = 200;
  response.set_content_provider(
      64, std::string(kJsonContentType), [](std::size_t, std::size_t, httplib::DataSink&) { return false; });
}

}  // namespace

ServiceCore::ServiceCore(double sessionTimeoutSeconds)
    : accounts_(Accounts::builtIn()), sessions_(sessionTimeoutSeconds), router_(accounts_, sessions_) {
  registerSessionEndpoints(router_, sessions_);
  registerKnowledgeBaseEndpoints(router_, sessions_);
  registerConversationEndpoints(router_);
  registerSearchEndpoints(router_, sessions_);
  registerChannelEndpoints(router_);
}

void ServiceCore::handle(const httplib::Request& request, httplib::Response& response) {
  const RecordedRequest recorded = recordOf(request);
  log_.record(recorded);

  if (const std::optional<Fault> fault = faults_.take(recorded.endpoint)) {
    if (fault->kind == FaultKind::DropConnection) {
      dropConnection(response);
      return;
    }
    if (fault->kind == FaultKind::Delay) {
      std::this_thread::sleep_for(fault->delay);
    } else if (const std::optional<Reply> reply = Faults::replyFor(fault->kind)) {
      send(*reply, response);
      return;
    }
  }

  if (recorded.method != "GET" && recorded.method != "HEAD") {
    send(Reply::error(405, "Method not allowed"), response);
    return;
  }
  try {
    send(router_.dispatch(recorded), response);
  } catch (const std::exception&) {
    send(Reply::error(500, "Internal error"), response);
  }
}

}  // namespace quorvix::sandbox
