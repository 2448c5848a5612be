#pragma once
/// @file
/// How the configuration, FAQ groups and answers print: text for people and
/// JSON documents with every property under its name.

#include "engine/Helpers.h"
#include "quorvix/core/Json.h"
#include "tool/Output.h"

namespace quorvix {
class QXConfiguration;
class QXFAQGroup;
class QXQueryResult;
}  // namespace quorvix

namespace quorvix::cli {

using documents::colorText;
using documents::configurationJson;
using documents::groupJson;
using documents::queryResultJson;

/// The configuration's titles, colours, texts, switches, FAQ groups and labels.
TextResult configurationText(const QXConfiguration& configuration);
/// An answer's title, id and body.
TextResult queryResultText(const QXQueryResult& result);

}  // namespace quorvix::cli
