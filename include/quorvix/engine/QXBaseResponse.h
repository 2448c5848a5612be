#pragma once
/// @file
/// The root of the engine's model objects.

#include <memory>

#include "quorvix/core/Json.h"

namespace quorvix {

/// Root of every model object the engine hands out (lets `QXResponse::type`
/// hold any of them).
class QXObject {
 public:
  virtual ~QXObject() = default;
};

/// Base of every model built from a JSON dictionary. Subclasses override
/// `inflate` to read their fields and offer `initWithParams`, which gives
/// nothing for an absent dictionary.
class QXBaseResponse : public QXObject {
 public:
  /// Reads the fields of this model from the dictionary; the base reads nothing.
  virtual void inflate(const JsonObject& params);

 protected:
  /// Makes a `T` and inflates it, or nothing when `params` is absent.
  template <class T>
  static std::shared_ptr<T> create(const JsonObject* params) {
    if (params == nullptr) return nullptr;
    auto object = std::make_shared<T>();
    object->inflate(*params);
    return object;
  }
};

}  // namespace quorvix
