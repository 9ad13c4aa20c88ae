#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Log/Record.h"

/// A small logging framework: publishers are destinations, filters say which records pass,
/// formatters make text of a record, and a logger ties one of each together.
/// It is used from one thread.
namespace Qov::Log {

class QOV_EXPORT Filter {
 public:
  virtual ~Filter() = default;
  virtual bool operator()(const Util::LogRecord& record) = 0;
};

/// Passes records of level N and above.
template <std::uint16_t N>
class LevelFilter : public Filter {
 public:
  bool operator()(const Util::LogRecord& record) override { return record.mLevel >= N; }
};

class QOV_EXPORT Formatter {
 public:
  virtual ~Formatter() = default;
  virtual std::string operator()(const Util::LogRecord& record) = 0;
};

/// "Index : 758 @ the message", with the last part of the source's path and a newline.
class QOV_EXPORT DefaultFormatter : public Formatter {
 public:
  std::string operator()(const Util::LogRecord& record) override;
};

class QOV_EXPORT Publisher {
 public:
  virtual ~Publisher() = default;
  virtual Publisher& operator<<(const char* text) = 0;
  virtual void flush() = 0;
};

class QOV_EXPORT StreamPublisher : public Publisher {
 public:
  explicit StreamPublisher(std::ostream& stream) : mStream(stream) {}
  Publisher& operator<<(const char* text) override;
  void flush() override;

 private:
  std::ostream& mStream;
};

/// Writes to a file that is emptied when it is opened.
class QOV_EXPORT FilePublisher : public Publisher {
 public:
  explicit FilePublisher(const char* path) : mStream(path, std::ios::out | std::ios::trunc) {}
  Publisher& operator<<(const char* text) override;
  void flush() override;

 private:
  std::ofstream mStream;
};

class QOV_EXPORT NullPublisher : public Publisher {
 public:
  Publisher& operator<<(const char*) override { return *this; }
  void flush() override {}
};

/// The process's log. Reach it through Util::SingletonHolder<Manager>.
class QOV_EXPORT Manager {
 public:
  /// Registers the filter and the formatter named "__Default__": errors, one line each.
  Manager();

  /// Registers a destination that gets the error records. A name that is there already is
  /// replaced. The manager takes over ownership.
  void AddPublisher(const std::string& name, Publisher* publisher);
  /// A name that is there already is replaced, for the loggers that use it too.
  void AddFilter(const std::string& name, std::unique_ptr<Filter> filter);
  void AddFormatter(const std::string& name, std::unique_ptr<Formatter> formatter);
  /// Ties registered parts together. An unknown name raises "Element Not Found".
  void AddLogger(const std::string& publisher, const std::string& filter,
                 const std::string& formatter);

  /// Registers a destination for the records of kTraceLevel and above.
  void TraceTo(const std::string& name, std::unique_ptr<Publisher> publisher);

  /// Hands a record to every destination whose filter passes it, before it returns.
  void Dispatch(const Util::LogRecord& record);

 private:
  struct Logger {
    std::size_t mPublisher;
    std::size_t mFilter;
    std::size_t mFormatter;
  };

  template <class Part>
  struct Registry {
    std::map<std::string, std::size_t> mIndices;
    std::vector<std::unique_ptr<Part>> mParts;

    /// Adds the part, or puts it in the place of the one of that name. Gives its index.
    std::size_t Put(const std::string& name, std::unique_ptr<Part> part);
    std::size_t IndexOf(const std::string& name) const;
  };

  /// Replacing a publisher drops the loggers of the earlier one.
  void PutPublisher(const std::string& name, std::unique_ptr<Publisher> publisher);

  Registry<Publisher> mPublishers;
  Registry<Filter> mFilters;
  Registry<Formatter> mFormatters;
  std::vector<Logger> mLoggers;
};

/// Send the records of kTraceLevel and above to standard error, to a file, or nowhere.
QOV_EXPORT void LogTraceToConsole();
QOV_EXPORT void LogTraceToFile(const char* path);
QOV_EXPORT void LogTraceToNull();

}  // namespace Qov::Log
