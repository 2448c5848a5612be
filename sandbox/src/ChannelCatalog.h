#pragma once
/// @file
/// The escalation channels of each account's articles, read from the data
/// files "channels-*.json": which channels an article offers, and which of
/// them apply for the user's like state ("none", "positiveFeedback",
/// "negativeFeedback") and context.

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "KnowledgeBase.h"

namespace quorvix::sandbox {

/// The like states the service knows.
bool isClientState(std::string_view state);

/// One knowledge base's channels.
class ChannelCatalog {
 public:
  /// Parses one "channels-*.json" document; throws std::runtime_error when it is malformed.
  static ChannelCatalog fromJson(std::string_view json);

  const std::string& account() const { return account_; }
  const std::string& knowledgeBase() const { return knowledgeBase_; }

  /// The channel descriptions of `articleId` that apply for `clientState` and
  /// `filter` (a channel bound to a context value applies when the filter does
  /// not name another value), in the order the catalogue lists them.
  boost::json::array forArticle(std::string_view articleId, std::string_view clientState,
                                const ContextFilter& filter) const;
  /// The channels the knowledge base offers with every search reply.
  boost::json::array general(std::string_view clientState, const ContextFilter& filter) const;

 private:
  struct Channel {
    std::string key;
    std::vector<std::string> states;
    std::map<std::string, std::string> contexts;
    boost::json::object description;
  };

  boost::json::array select(const std::vector<std::string>& keys, std::string_view clientState,
                            const ContextFilter& filter) const;

  std::string account_;
  std::string knowledgeBase_;
  std::vector<Channel> channels_;
  std::vector<std::string> general_;
  std::vector<std::string> defaultArticleChannels_;
  std::map<std::string, std::vector<std::string>, std::less<>> articles_;
};

/// Every channel catalogue of the service.
class ChannelCatalogs {
 public:
  /// The catalogues compiled into the service, loaded once.
  static const ChannelCatalogs& builtIn();
  void add(ChannelCatalog catalog) { catalogs_.push_back(std::move(catalog)); }
  /// The catalogue of `account`'s knowledge base `kb`, or nullptr.
  const ChannelCatalog* find(std::string_view account, std::string_view kb) const;

 private:
  std::vector<ChannelCatalog> catalogs_;
};

}  // namespace quorvix::sandbox
