#include "OrmelSDK/Platform/WatchedDescriptor.h"

#include "OrmelSDK/Platform/FailureInjection.h"
#include "OrmelSDK/Platform/ProcessLaunchError.h"

namespace ormel::detail {

asio::posix::stream_descriptor watchedDescriptor(asio::io_context& context, FileDescriptor descriptor) {
  if (const int number = injectedFailure(SystemCall::watch)) throw ProcessLaunchError("descriptor", number);
  asio::posix::stream_descriptor watched(context);
  asio::error_code failure;
  watched.assign(descriptor.number(), failure);
  if (failure) throw ProcessLaunchError("descriptor", failure.value());
  descriptor.release();
  watched.native_non_blocking(true, failure);
  if (failure) throw ProcessLaunchError("descriptor", failure.value());
  return watched;
}

}  // namespace ormel::detail
