#pragma once

#include <exception>
#include <memory>
#include <string>

namespace [[using gnu: visibility("default")]] Kel {

/// The base of all exceptions of the framework; caught by type across the library's boundary.
class Exception : public std::exception {
 public:
  explicit Exception(const std::string& message);  ///< `message` is what what() says, unchanged
  Exception(const Exception&) noexcept = default;  ///< shares the message; cannot fail
  Exception& operator=(const Exception&) noexcept = default;
  ~Exception() override;

  const char* what() const noexcept override;  ///< the message

 private:
  std::shared_ptr<const std::string> message_;  // shared: copying an exception must not throw
};

/// A value outside what its type allows.
class RangeException : public Exception {
 public:
  using Exception::Exception;  ///< from the message
  ~RangeException() override;
};

/// A child exists under the key, and it was built from other objects than those given now.
class ReinstantiationException : public Exception {
 public:
  using Exception::Exception;  ///< from the message
  ~ReinstantiationException() override;
};

/// Raises RangeException with `message` unchanged.
[[noreturn]] void throwRangeException(const std::string& message);

namespace Impl {
/// Raises ReinstantiationException: `collection` already holds `key`, built from other objects.
[[noreturn]] void throwMutatorReinstantiating(const std::string& collection,
                                              const std::string& key);
}  // namespace Impl

}  // namespace Kel
