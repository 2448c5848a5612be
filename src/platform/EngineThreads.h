#pragma once
/// @file
/// Ending the engine's default threads when the process ends.

namespace quorvix::detail {

/// Stops and joins the default main executor and timer threads (a task under
/// way finishes first); tasks handed to them afterwards are dropped, and
/// defaults made afterwards start stopped. Runs at process exit before the
/// default transport shuts down, so no delayed call or main-queue task can
/// reach a transport, or anything else, that exit is destroying. Idempotent.
void stopDefaultThreads();

}  // namespace quorvix::detail
