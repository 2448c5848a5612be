#pragma once
/// @file
/// Registration of the endpoint groups. Each group lives in its own file in
/// this folder and registers its handlers on the router.

#include "Router.h"
#include "Sessions.h"

namespace quorvix::sandbox {

/// "hello.js" (opens a session) and "keepAlive.js" (keeps one alive).
void registerSessionEndpoints(Router& router, Sessions& sessions);

}  // namespace quorvix::sandbox
