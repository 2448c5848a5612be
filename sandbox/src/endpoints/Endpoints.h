#pragma once
/// @file
/// Registration of the endpoint groups. Each group lives in its own file in
/// this folder and registers its handlers on the router.

#include "Router.h"
#include "Sessions.h"

namespace quorvix::sandbox {

/// "hello.js" (opens a session) and "keepAlive.js" (keeps one alive).
void registerSessionEndpoints(Router& router, Sessions& sessions);
/// "cnf.json", "list.json", "faq", "getUserLabels", "answer.js" and "addFeedback".
void registerKnowledgeBaseEndpoints(Router& router, Sessions& sessions);
/// The conversation bot: "create", "statement" and "createFeedbackResponse".
void registerConversationEndpoints(Router& router);
/// Search, suggestions and contexts: "q.js", "autoComplete", "contextvalues.js" and "setParams".
void registerSearchEndpoints(Router& router, Sessions& sessions);
/// Channels: "get", "escalate", "report", and "trackEvent".
void registerChannelEndpoints(Router& router);

}  // namespace quorvix::sandbox
