#include "Qov/Log/Manager.h"

#include <algorithm>
#include <iostream>
#include <string_view>
#include <utility>

#include "Qov/Util/Raise.h"
#include "Qov/Util/SingletonHolder.h"

namespace Qov::Log {
namespace {

constexpr const char* kSource = "include/Qov/Log/Manager";
constexpr const char* kDefault = "__Default__";
constexpr const char* kTraceFilter = "trace log";

/// Returns the part of a path after its last slash or backslash.
std::string_view FileName(std::string_view path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

Manager& TheManager() { return Util::SingletonHolder<Manager>::Instance(); }

}  // namespace

std::string DefaultFormatter::operator()(const Util::LogRecord& record) {
  std::string line(FileName(record.mFile));
  line += " : " + std::to_string(record.mLine) + " @ ";
  line += record.mMessage.data();
  line += '\n';
  return line;
}

Publisher& StreamPublisher::operator<<(const char* text) {
  mStream << text;
  return *this;
}

void StreamPublisher::flush() { mStream.flush(); }

Publisher& FilePublisher::operator<<(const char* text) {
  mStream << text;
  return *this;
}

void FilePublisher::flush() { mStream.flush(); }

template <class Part>
std::size_t Manager::Registry<Part>::Put(const std::string& name, std::unique_ptr<Part> part) {
  const auto [entry, isNew] = mIndices.try_emplace(name, mParts.size());
  if (isNew) {
    mParts.push_back(std::move(part));
  } else {
    mParts[entry->second] = std::move(part);
  }
  return entry->second;
}

template <class Part>
std::size_t Manager::Registry<Part>::IndexOf(const std::string& name) const {
  const auto entry = mIndices.find(name);
  if (entry == mIndices.end()) {
    Qov::Util::RaiseElementNotFound(kSource);
  }
  return entry->second;
}

Manager::Manager() {
  AddFilter(kDefault, std::make_unique<LevelFilter<kErrorLevel>>());
  AddFormatter(kDefault, std::make_unique<DefaultFormatter>());
}

void Manager::AddPublisher(const std::string& name, Publisher* publisher) {
  PutPublisher(name, std::unique_ptr<Publisher>(publisher));
  AddLogger(name, kDefault, kDefault);
}

void Manager::PutPublisher(const std::string& name, std::unique_ptr<Publisher> publisher) {
  const std::size_t index = mPublishers.Put(name, std::move(publisher));
  std::erase_if(mLoggers, [index](const Logger& logger) { return logger.mPublisher == index; });
}

void Manager::AddFilter(const std::string& name, std::unique_ptr<Filter> filter) {
  mFilters.Put(name, std::move(filter));
}

void Manager::AddFormatter(const std::string& name, std::unique_ptr<Formatter> formatter) {
  mFormatters.Put(name, std::move(formatter));
}

void Manager::AddLogger(const std::string& publisher, const std::string& filter,
                        const std::string& formatter) {
  mLoggers.push_back(
      {mPublishers.IndexOf(publisher), mFilters.IndexOf(filter), mFormatters.IndexOf(formatter)});
}

void Manager::TraceTo(const std::string& name, std::unique_ptr<Publisher> publisher) {
  AddFilter(kTraceFilter, std::make_unique<LevelFilter<kTraceLevel>>());
  PutPublisher(name, std::move(publisher));
  AddLogger(name, kTraceFilter, kDefault);
}

void Manager::Dispatch(const Util::LogRecord& record) {
  for (const Logger& logger : mLoggers) {
    if (!(*mFilters.mParts[logger.mFilter])(record)) continue;
    const std::string text = (*mFormatters.mParts[logger.mFormatter])(record);
    Publisher& publisher = *mPublishers.mParts[logger.mPublisher];
    publisher << text.c_str();
    publisher.flush();
  }
}

void LogTraceToConsole() {
  TheManager().TraceTo("log to console", std::make_unique<StreamPublisher>(std::cerr));
}

void LogTraceToFile(const char* path) {
  TheManager().TraceTo("log file", std::make_unique<FilePublisher>(path));
}

void LogTraceToNull() { TheManager().TraceTo("log to null", std::make_unique<NullPublisher>()); }

}  // namespace Qov::Log
