#pragma once

namespace [[using gnu: visibility("default")]] Kel {

/// Writes `<file>:<line>: <function>: assertion "<conditionText>" failed: <message>` and a line
/// break to standard error and aborts. `function` is a literal with the signature of the caller,
/// because compilers do not agree on how to print one.
[[noreturn, gnu::cold]] void assertionFailed(const char* conditionText, const char* message,
                                             const char* function,
                                             const char* file = __builtin_FILE(),
                                             int line = __builtin_LINE());

/// Asserts what must hold whatever happens outside, in every type of build: a process that goes on
/// with broken data would write a wrong policy. All texts are literals.
inline void require(bool condition, const char* conditionText, const char* message,
                    const char* function, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
  if (!condition) [[unlikely]] {
    assertionFailed(conditionText, message, function, file, line);
  }
}

}  // namespace Kel
