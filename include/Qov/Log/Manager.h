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

/// A small logging framework. A publisher is a destination, a filter selects records, a formatter
/// makes text of a record, and a logger combines one of each. It must be used by one thread.
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

/// Returns "Index : 758 @ the message" and a newline. "Index" is the last part of the source path.
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

/// Writes to a file, which is truncated when it is opened.
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

/// The log of the process. Util::SingletonHolder<Manager> holds it.
class QOV_EXPORT Manager {
 public:
  /// Registers the filter and the formatter "__Default__", which write a line for each error.
  Manager();

  /// Registers a destination for error records and takes ownership of it. Replaces a publisher of
  /// the same name.
  void AddPublisher(const std::string& name, Publisher* publisher);
  /// Replaces a filter of the same name, also in the loggers that use it.
  void AddFilter(const std::string& name, std::unique_ptr<Filter> filter);
  void AddFormatter(const std::string& name, std::unique_ptr<Formatter> formatter);
  /// Combines registered parts. Raises ElementNotFound if a name is unknown.
  void AddLogger(const std::string& publisher, const std::string& filter,
                 const std::string& formatter);

  /// Registers a destination for the records of kTraceLevel and above.
  void TraceTo(const std::string& name, std::unique_ptr<Publisher> publisher);

  /// Writes a record to each destination whose filter passes it.
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

    /// Adds a part, or replaces the part of the same name. Returns its index.
    std::size_t Put(const std::string& name, std::unique_ptr<Part> part);
    std::size_t IndexOf(const std::string& name) const;
  };

  /// Adds a publisher. Removes the loggers of a publisher of the same name.
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
