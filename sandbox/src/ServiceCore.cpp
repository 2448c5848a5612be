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

  const std::optional<Fault> fault = faults_.take(recorded.endpoint);
  if (fault) {
    if (Faults::answerInstead(*fault, response)) {
      return;
    }
    if (fault->kind == FaultKind::Delay) {
      std::this_thread::sleep_for(fault->delay);
    }
  }
  const bool truncated = fault && fault->kind == FaultKind::TruncatedBody;
  if (recorded.method != "GET" && recorded.method != "HEAD") {
    send(Reply::error(405, "Method not allowed"), response);
    return;
  }
  Reply reply;
  try {
    reply = router_.dispatch(recorded);
  } catch (const std::exception&) {
    reply = Reply::error(500, "Internal error");
  }
  if (truncated) {
    Faults::truncate(reply, response);
  } else {
    send(reply, response);
  }
}

}  // namespace quorvix::sandbox
