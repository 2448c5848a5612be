#pragma once
/// @file
/// How the configuration, FAQ groups and answers print: text for people and
/// JSON documents with every property under its name.

#include "quorvix/engine/Helpers.h"
#include "quorvix/engine/Json.h"
#include "tool/Output.h"

namespace quorvix {
class QXConfiguration;
class QXFAQGroup;
class QXQueryResult;
}  // namespace quorvix

namespace quorvix::cli {

/// "#RRGGBB" of a colour.
std::string colorText(const QXColor& color);
/// The configuration's titles, colours, texts, switches, FAQ groups and labels.
TextResult configurationText(const QXConfiguration& configuration);
/// Every property of the configuration and its components.
JsonObject configurationJson(const QXConfiguration& configuration);
/// A FAQ group: title, behavior and its answers.
JsonObject groupJson(QXFAQGroup& group);
/// An answer's title, id and body.
TextResult queryResultText(const QXQueryResult& result);
/// Every property of an answer.
JsonObject queryResultJson(const QXQueryResult& result);

}  // namespace quorvix::cli
