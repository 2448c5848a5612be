#pragma once
/// @file
/// The JSON value types the engine hands to hosts: values kept "as sent".

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/string.hpp>
#include <boost/json/value.hpp>

namespace quorvix {

/// Any JSON value, kept as the service sent it.
using Json = boost::json::value;
/// A JSON dictionary; keys keep their insertion order.
using JsonObject = boost::json::object;
/// A JSON array.
using JsonArray = boost::json::array;

}  // namespace quorvix
