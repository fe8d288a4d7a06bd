#include "Expectations/Registry.h"
#include "OrmelSDK/Records/PluginRecords.h"
#include "OrmelSDK/Records/SkillRecords.h"

namespace ormel::tests {

void registerPluginRecords(Registry& registry) {
  registry.enumeration<PluginInstallPolicy>();
  registry.enumeration<PluginAuthPolicy>();
  registry.enumeration<PluginSharePrincipalRole>();
  registry.enumeration<PluginShareDiscoverability>();
  registry.enumeration<PluginShareUpdateDiscoverability>();
  registry.enumeration<PluginSharePrincipalType>();
  registry.enumeration<PluginShareTargetRole>();
  registry.enumeration<PluginListMarketplaceKind>();
  registry.vocabulary<PluginInstallPolicySource>(
      {{"workspaceSetting", PluginInstallPolicySource::workspaceSetting},
       {"implicitCanonicalApp", PluginInstallPolicySource::implicitCanonicalApp}});
  registry.vocabulary<PluginDisabledReason>({{"disabledByAdmin", PluginDisabledReason::disabledByAdmin},
                                             {"planNotEligible", PluginDisabledReason::planNotEligible},
                                             {"requiredAppUnavailable", PluginDisabledReason::requiredAppUnavailable}});
  registry.enumeration<PluginAvailability>();
  registry.special<PluginSource>();
  registry.record<PluginListResponse>();
  registry.record<PluginInstalledResponse>();
  registry.record<MarketplaceLoadErrorInfo>();
  registry.record<PluginMarketplaceEntry>();
  registry.record<MarketplaceInterface>();
  registry.record<PluginSummary>();
  registry.record<PluginHookSummary>();
  registry.record<PluginDetail>();
  registry.record<PluginReadResponse>();
  registry.record<PluginSkillReadResponse>();
  registry.record<PluginInterface>();
  registry.record<SkillSummary>();
  registry.record<SkillInterface>();
  registry.record<AppSummary>();
  registry.record<PluginInstallResponse>();
  registry.record<PluginShareTarget>();
  registry.record<PluginSharePrincipal>();
  registry.record<PluginShareContext>();
  registry.record<PluginShareListItem>();
  registry.record<PluginShareListResponse>();
  registry.record<PluginShareSaveResponse>();
  registry.record<PluginShareUpdateTargetsResponse>();
  registry.record<PluginShareCheckoutResponse>();
  registry.record<MarketplaceAddResponse>();
  registry.record<MarketplaceRemoveResponse>();
  registry.record<MarketplaceUpgradeErrorInfo>();
  registry.record<MarketplaceUpgradeResponse>();
  registry.record<PluginUninstallResponse>();
  registry.record<PluginShareDeleteResponse>();
}

}  // namespace ormel::tests
