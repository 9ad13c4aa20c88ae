#pragma once

namespace Qov::Util {

/// Holds the one instance of T of the process, made when it is first asked for.
template <class T>
class SingletonHolder {
 public:
  SingletonHolder() = delete;

  static T& Instance() {
    static T instance;
    return instance;
  }
};

}  // namespace Qov::Util
