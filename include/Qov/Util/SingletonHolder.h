#pragma once

#include "Qov/Export.h"

namespace Qov::Util {

/// Holds the only instance of T in the process. It is created by the first call of Instance and
/// destroyed when the process ends. The program and the shared library use the same instance.
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
