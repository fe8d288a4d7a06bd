#include "OrmelSDK/Records/ThreadSettings.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::ActivePermissionProfile> {
  static constexpr Field fields[] = {
      required<&ActivePermissionProfile::id>("id"),
      optional<&ActivePermissionProfile::extends>("extends"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::ThreadSettings> {
  static constexpr Field fields[] = {
      required<&ThreadSettings::cwd>("cwd"),
      required<&ThreadSettings::approvalPolicy>("approvalPolicy"),
      required<&ThreadSettings::approvalsReviewer>("approvalsReviewer"),
      required<&ThreadSettings::sandboxPolicy>("sandboxPolicy"),
      optional<&ThreadSettings::activePermissionProfile>("activePermissionProfile"),
      required<&ThreadSettings::model>("model"),
      required<&ThreadSettings::modelProvider>("modelProvider"),
      optional<&ThreadSettings::serviceTier>("serviceTier"),
      optional<&ThreadSettings::effort>("effort"),
      optional<&ThreadSettings::summary>("summary"),
      required<&ThreadSettings::collaborationMode>("collaborationMode"),
      optional<&ThreadSettings::personality>("personality"),
  };
};

ORMEL_DEFINE_RECORD(ActivePermissionProfile)
ORMEL_DEFINE_RECORD(ThreadSettings)
