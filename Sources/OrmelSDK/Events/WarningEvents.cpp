#include "OrmelSDK/Events/WarningEvents.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::ThreadWarningEvent> {
  static constexpr Field fields[] = {
      optional<&ThreadWarningEvent::threadID>("thread_id", "threadId"),
      required<&ThreadWarningEvent::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AuthRecoveryEvent> {
  static constexpr Field fields[] = {
      required<&AuthRecoveryEvent::threadID>("thread_id", "threadId"),
      required<&AuthRecoveryEvent::turnID>("turn_id", "turnId"),
      required<&AuthRecoveryEvent::provider>("provider"),
      required<&AuthRecoveryEvent::message>("message"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::DeprecationNoticeEvent> {
  static constexpr Field fields[] = {
      required<&DeprecationNoticeEvent::summary>("summary"),
      optional<&DeprecationNoticeEvent::details>("details"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::TextPosition> {
  static constexpr Field fields[] = {
      required<&TextPosition::line>("line"),
      required<&TextPosition::column>("column"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::TextRange> {
  static constexpr Field fields[] = {
      required<&TextRange::start>("start"),
      required<&TextRange::end>("end"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ConfigWarningEvent> {
  static constexpr Field fields[] = {
      required<&ConfigWarningEvent::summary>("summary"),
      optional<&ConfigWarningEvent::details>("details"),
      optional<&ConfigWarningEvent::path>("path"),
      optional<&ConfigWarningEvent::range>("range"),
  };
};

ORMEL_DEFINE_HOT_RECORD(ThreadWarningEvent)
ORMEL_DEFINE_HOT_RECORD(AuthRecoveryEvent)
ORMEL_DEFINE_HOT_RECORD(DeprecationNoticeEvent)
ORMEL_DEFINE_HOT_RECORD(TextPosition)
ORMEL_DEFINE_HOT_RECORD(TextRange)
ORMEL_DEFINE_HOT_RECORD(ConfigWarningEvent)
