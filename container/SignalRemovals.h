#pragma once

#include <csignal>
#include <string>

/// Unfinished files and folders that a program removes if a signal ends it.
namespace QovJbf {

/// Lets SIGHUP, SIGINT, SIGQUIT, SIGTERM and SIGXCPU remove the remembered paths, newest first,
/// before they end the process. Signals that are ignored stay ignored. Ignores SIGXFSZ, so that a
/// file at its size limit is an error. Programs call this once; the library never installs
/// handlers.
void RemoveOutputsOnSignals();

/// Remembers a file or an empty folder. Returns an entry for ForgetRemoval.
struct SignalRemoval;
SignalRemoval* RememberRemoval(const std::string& path);
void ForgetRemoval(SignalRemoval* removal);

/// Blocks these signals for the calling thread while the object exists, so that a path can be made
/// and remembered in one step.
class SignalBlock {
 public:
  SignalBlock();
  ~SignalBlock();
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;

 private:
  sigset_t mBefore;
};

}  // namespace QovJbf
