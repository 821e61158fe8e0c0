#include "Kel/Exception.h"

namespace Kel {

Exception::Exception(const std::string& message)
    : message_(std::make_shared<const std::string>(message)) {}

// The destructors are here so that the type information of each exception lives in one library.
Exception::~Exception() = default;
RangeException::~RangeException() = default;
ReinstantiationException::~ReinstantiationException() = default;

const char* Exception::what() const noexcept { return message_->c_str(); }

void throwRangeException(const std::string& message) { throw RangeException(message); }

namespace Impl {
void throwMutatorReinstantiating(const std::string& collection, const std::string& key) {
  throw ReinstantiationException(collection + "[" + key +
                                 "] exists and was built from other objects than those given; "
                                 "remove it before creating it anew");
}
}  // namespace Impl

}  // namespace Kel
