#include "OrmelSDK/OrmelControlSession.h"

#include "OrmelSDK/Management/ControlSession.h"

namespace ormel {

Task<EventChannel<OrmelControlNotification>> OrmelControlSession::notifications() const {
  return detail::ControlSession::notifications(session_);
}

Task<void> OrmelControlSession::close() const { return detail::ControlSession::close(session_); }

}  // namespace ormel
