#include "ChannelCatalog.h"

#include <algorithm>
#include <boost/json.hpp>
#include <optional>
#include <stdexcept>
#include <utility>

#include "EmbeddedData.h"
#include "SearchRanking.h"

namespace quorvix::sandbox {

namespace json = boost::json;

namespace {

// The channel files compiled into the service.
constexpr std::string_view kChannelFiles[] = {"channels-acme.json"};

constexpr std::string_view kClientStates[] = {"none", "positiveFeedback", "negativeFeedback"};

std::vector<std::string> texts(const json::value& value) {
  std::vector<std::string> result;
  for (const json::value& entry : value.as_array()) result.emplace_back(entry.as_string());
  return result;
}

}  // namespace

bool isClientState(std::string_view state) {
  return std::find(std::begin(kClientStates), std::end(kClientStates), state) != std::end(kClientStates);
}

ChannelCatalog ChannelCatalog::fromJson(std::string_view document) {
  ChannelCatalog catalog;
  try {
    const json::object root = json::parse(document).as_object();
    catalog.account_ = std::string(root.at("account").as_string());
    catalog.knowledgeBase_ = std::string(root.at("knowledgeBase").as_string());
    for (const json::value& entry : root.at("channels").as_array()) {
      const json::object& object = entry.as_object();
      Channel channel{std::string(object.at("key").as_string()), texts(object.at("states")), {},
                      object.at("description").as_object()};
      for (const std::string& state : channel.states) {
        if (!isClientState(state)) throw std::runtime_error("unknown like state \"" + state + "\"");
      }
      if (const json::value* contexts = object.if_contains("contexts")) {
        for (const auto& pair : contexts->as_object()) {
          channel.contexts.emplace(pair.key(), pair.value().as_string());
        }
      }
      catalog.channels_.push_back(std::move(channel));
    }
    catalog.general_ = texts(root.at("general"));
    catalog.defaultArticleChannels_ = texts(root.at("defaultArticleChannels"));
    for (const auto& pair : root.at("articles").as_object()) {
      catalog.articles_.emplace(pair.key(), texts(pair.value()));
    }
    auto known = [&](const std::string& key) {
      return std::any_of(catalog.channels_.begin(), catalog.channels_.end(),
                         [&](const Channel& channel) { return channel.key == key; });
    };
    auto checkAll = [&](const std::vector<std::string>& keys) {
      for (const std::string& key : keys) {
        if (!known(key)) throw std::runtime_error("unknown channel \"" + key + "\"");
      }
    };
    checkAll(catalog.general_);
    checkAll(catalog.defaultArticleChannels_);
    for (const auto& [article, keys] : catalog.articles_) checkAll(keys);
  } catch (const std::exception& error) {
    throw std::runtime_error(std::string("channels: ") + error.what());
  }
  return catalog;
}

json::array ChannelCatalog::select(const std::vector<std::string>& keys, std::string_view clientState,
                                   const ContextFilter& filter) const {
  json::array selected;
  for (const Channel& channel : channels_) {
    if (std::find(keys.begin(), keys.end(), channel.key) == keys.end()) continue;
    if (std::find(channel.states.begin(), channel.states.end(), clientState) == channel.states.end()) continue;
    Article bound;
    bound.contexts = channel.contexts;
    if (!appliesUnder(bound, filter)) continue;
    selected.push_back(channel.description);
  }
  return selected;
}

json::array ChannelCatalog::forArticle(std::string_view articleId, std::string_view clientState,
                                       const ContextFilter& filter) const {
  auto found = articles_.find(articleId);
  return select(found != articles_.end() ? found->second : defaultArticleChannels_, clientState, filter);
}

json::array ChannelCatalog::general(std::string_view clientState, const ContextFilter& filter) const {
  return select(general_, clientState, filter);
}

const ChannelCatalogs& ChannelCatalogs::builtIn() {
  static const ChannelCatalogs catalogs = [] {
    ChannelCatalogs result;
    for (std::string_view name : kChannelFiles) {
      const std::optional<std::string_view> text = embeddedFile(name);
      if (!text) throw std::runtime_error("channels: " + std::string(name) + " was not embedded");
      result.add(ChannelCatalog::fromJson(*text));
    }
    return result;
  }();
  return catalogs;
}

const ChannelCatalog* ChannelCatalogs::find(std::string_view account, std::string_view kb) const {
  for (const ChannelCatalog& catalog : catalogs_) {
    if (catalog.account() == account && catalog.knowledgeBase() == kb) return &catalog;
  }
  return nullptr;
}

}  // namespace quorvix::sandbox
