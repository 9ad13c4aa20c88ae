#pragma once

#include "Qov/Export.h"

namespace Qov::Util {

/// Holds the one instance of T of the process, made when it is first asked for and destroyed when
/// the process ends. A program and the shared library see the same one.
template <class T>
class QOV_EXPORT SingletonHolder {
 public:
  SingletonHolder() = delete;

  static T& Instance() {
    static T instance;
    return instance;
  }
};

}  // namespace Qov::Util
