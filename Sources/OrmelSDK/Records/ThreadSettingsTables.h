#pragma once

#include <tuple>

#include "OrmelSDK/Coding/FieldTable.h"
#include "OrmelSDK/Input/ApprovalModeTables.h"
#include "OrmelSDK/Input/ThreadChoicesTables.h"
#include "OrmelSDK/Records/ThreadSettings.h"

template <>
struct ormel::coding::RecordTable<ormel::ActivePermissionProfile> {
  static constexpr auto fields =
      std::tuple(required<&ActivePermissionProfile::id>("id"), optional<&ActivePermissionProfile::extends>("extends"));
};
ORMEL_DECLARE_CODEC(ActivePermissionProfile)

template <>
struct ormel::coding::RecordTable<ormel::ThreadSettings> {
  static constexpr auto fields = std::tuple(
      required<&ThreadSettings::cwd>("cwd"), required<&ThreadSettings::approvalPolicy>("approvalPolicy"),
      required<&ThreadSettings::approvalsReviewer>("approvalsReviewer"),
      required<&ThreadSettings::sandboxPolicy>("sandboxPolicy"),
      optional<&ThreadSettings::activePermissionProfile>("activePermissionProfile"),
      required<&ThreadSettings::model>("model"), required<&ThreadSettings::modelProvider>("modelProvider"),
      optional<&ThreadSettings::serviceTier>("serviceTier"), optional<&ThreadSettings::effort>("effort"),
      optional<&ThreadSettings::summary>("summary"), required<&ThreadSettings::collaborationMode>("collaborationMode"),
      optional<&ThreadSettings::personality>("personality"));
};
ORMEL_DECLARE_CODEC(ThreadSettings)
