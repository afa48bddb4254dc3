// The interfaces have their tables of virtual functions here, once.
#include "ara/per/file_proxy_accessor_factory.h"

namespace ara::per {

BasicOperations::~BasicOperations() = default;
ReadAccessor::~ReadAccessor() = default;
WriteAccessor::~WriteAccessor() = default;
ReadWriteAccessor::~ReadWriteAccessor() = default;
FileProxyAccessorFactory::~FileProxyAccessorFactory() = default;

}  // namespace ara::per
