#include "Kel/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Kel {

void assertionFailed(const char* conditionText, const char* message, const char* function,
                     const char* file, int line) {
  // One call, so that lines of other threads do not come between; standard error has no buffer.
  std::fprintf(stderr, "%s:%d: %s: assertion \"%s\" failed: %s\n", file, line, function,
               conditionText, message);
  std::abort();
}

}  // namespace Kel
