#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace [[using gnu: visibility("default")]] Kel {

/// A log message that the program can raise, known from the moment its library is loaded, so that a
/// catalogue of all messages, with what they mean and what to do, can be printed at any time.
///
/// Handles are objects with static storage; all texts are literals. Creating one puts it on the
/// process's list, destroying it (its library is unloaded) takes it off. Safe from any thread.
class LogHandle {
 public:
  /// The framework's standard recommended action.
  static constexpr const char* contactSupport =
      "If the problem persists, contact technical support with the output of the system log and of "
      "the trace around the time of the message.";

  /// `severity` is that of syslog: 0 (emergency) to 7 (debug). Every %s of `format` stands for one
  /// argument of `raise`, %% for a percent sign.
  LogHandle(const char* identifier, int severity, const char* format, const char* explanation,
            const char* recommendedAction);
  ~LogHandle();
  LogHandle(const LogHandle&) = delete;
  LogHandle& operator=(const LogHandle&) = delete;

  const char* identifier() const noexcept { return identifier_; }  ///< by which operators know it
  int severity() const noexcept { return severity_; }              ///< as for syslog
  const char* format() const noexcept { return format_; }          ///< with %s for each argument
  /// What has happened, for people.
  const char* explanation() const noexcept { return explanation_; }
  /// What to do, for people.
  const char* recommendedAction() const noexcept { return recommendedAction_; }

  /// The message with one argument in the place of each %s, in order. A missing argument is printed
  /// as "(missing)", surplus ones follow in parentheses: a wrong call must not hide the message.
  std::string message(std::initializer_list<std::string_view> arguments) const;

  /// Hands the message to the sink. Never fails: what a sink throws is dropped.
  template <class... Arguments>
  void raise(const Arguments&... arguments) const noexcept {
    raiseWith({std::string_view(arguments)...});
  }

  /// Receives a raised message.
  using Sink = std::function<void(const LogHandle& handle, const std::string& message)>;

  /// Replaces the sink of all handles; an empty one restores the standard one, which writes
  /// `<identifier> (severity <n>): <message>` as one line to standard error.
  static void sinkIs(Sink sink);

  /// The handle with this identifier, or null.
  static const LogHandle* find(std::string_view identifier);

  /// Calls `each` for every handle, in the order of their creation. Inside it no handle may be
  /// created or destroyed.
  static void forEach(const std::function<void(const LogHandle&)>& each);

 private:
  void raiseWith(std::initializer_list<std::string_view> arguments) const noexcept;

  const char* identifier_;
  int severity_;
  const char* format_;
  const char* explanation_;
  const char* recommendedAction_;
};

}  // namespace Kel
