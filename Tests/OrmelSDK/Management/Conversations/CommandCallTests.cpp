#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/Management/CommandParams.h"
#include "OrmelSDK/Records/CommandRecords.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "Support/CallRows.h"

namespace {

using namespace ormel;
using namespace ormel::testing;

constexpr const char* anExit = R"({"exitCode":0,"stdout":"","stderr":""})";
constexpr const char* isStarted = R"({"started":true})";

const ReplyRecords commandRecords = {
    {"command/exec", "CommandExecResponse"},
    {"command/exec/write", "EmptyRPCResponse"},
    {"command/exec/resize", "EmptyRPCResponse"},
    {"command/exec/terminate", "EmptyRPCResponse"},
    {"environment/add", "EnvironmentAddResponse"},
    {"remoteControl/enable", "RemoteControlStatusResponse"},
    {"remoteControl/disable", "RemoteControlStatusResponse"},
    {"remoteControl/status/read", "RemoteControlStatusResponse"},
    {"windowsSandbox/readiness", "WindowsSandboxReadinessResponse"},
    {"windowsSandbox/setupStart", "WindowsSandboxSetupStartResponse"},
};

const CallRow commandRows[] = {
    onOrmel(R"({"id":2,"method":"command/exec","params":{"command":["ls"]}})", anExit,
            [](const Ormel& ormel) { return ormel.executeCommand({"ls"}); }),
    onOrmel(R"({"id":2,"method":"command/exec","params":{"command":["ls","-l"],"processId":"p","cwd":"/w",)"
            R"("timeoutMs":1500,"streamStdoutStderr":true}})",
            R"({"exitCode":-9,"stdout":"a\nb","stderr":"c"})",
            [](const Ormel& ormel) {
              ExecuteCommandParams params;
              params.processID = "p";
              params.workingDirectory = "/w";
              params.timeoutMilliseconds = 1500;
              params.streamStdoutStderr = true;
              return ormel.executeCommand({"ls", "-l"}, params);
            }),
    onOrmel(R"({"id":2,"method":"command/exec","params":{"command":[],"processId":"","cwd":"","timeoutMs":0,)"
            R"("streamStdoutStderr":false}})",
            anExit,
            [](const Ormel& ormel) {
              ExecuteCommandParams params;
              params.processID = "";
              params.workingDirectory = "";
              params.timeoutMilliseconds = 0;
              params.streamStdoutStderr = false;
              return ormel.executeCommand({}, params);
            }),
    onOrmel(R"({"id":2,"method":"command/exec/write","params":{"processId":"p"}})", "{}", "null",
            [](const Ormel& ormel) { return ormel.writeCommandInput("p"); }),
    onOrmel(R"({"id":2,"method":"command/exec/write","params":{"processId":"p","deltaBase64":"eA==",)"
            R"("closeStdin":true}})",
            R"({"more":1})", "null",
            [](const Ormel& ormel) {
              WriteCommandInputParams params;
              params.deltaBase64 = "eA==";
              params.closeStdin = true;
              return ormel.writeCommandInput("p", params);
            }),
    onOrmel(R"({"id":2,"method":"command/exec/write","params":{"processId":"","deltaBase64":"","closeStdin":false}})",
            "{}", "null",
            [](const Ormel& ormel) {
              WriteCommandInputParams params;
              params.deltaBase64 = "";
              params.closeStdin = false;
              return ormel.writeCommandInput("", params);
            }),
    onOrmel(R"({"id":2,"method":"command/exec/resize","params":{"processId":"p","size":{"rows":24,"cols":80}}})", "{}",
            "null", [](const Ormel& ormel) { return ormel.resizeCommand("p", 24, 80); }),
    onOrmel(R"({"id":2,"method":"command/exec/terminate","params":{"processId":"p"}})", "{}", "null",
            [](const Ormel& ormel) { return ormel.terminateCommand("p"); }),

    onOrmel(R"({"id":2,"method":"environment/add","params":{"environmentId":"e","execServerUrl":"ws://x"}})",
            R"({"more":1})", "{}", [](const Ormel& ormel) { return ormel.addEnvironment("e", "ws://x"); }),
    onOrmel(R"({"id":2,"method":"remoteControl/enable"})",
            R"({"status":"connecting","serverName":"n","installationId":"i"})",
            [](const Ormel& ormel) { return ormel.enableRemoteControl(); }),
    onOrmel(R"({"id":2,"method":"remoteControl/enable"})",
            R"({"status":"connected","serverName":"","installationId":"","environmentId":"e"})",
            [](const Ormel& ormel) { return ormel.enableRemoteControl(); }),
    onOrmel(R"({"id":2,"method":"remoteControl/disable"})",
            R"({"status":"disabled","serverName":"n","installationId":"i","environmentId":null})",
            R"({"status":"disabled","serverName":"n","installationId":"i"})",
            [](const Ormel& ormel) { return ormel.disableRemoteControl(); }),
    onOrmel(R"({"id":2,"method":"remoteControl/status/read"})",
            R"({"status":"errored","serverName":"n","installationId":"i","environmentId":"e"})",
            [](const Ormel& ormel) { return ormel.readRemoteControlStatus(); }),
    onOrmel(R"({"id":2,"method":"windowsSandbox/readiness"})", R"({"status":"ready"})",
            [](const Ormel& ormel) { return ormel.readWindowsSandboxReadiness(); }),
    onOrmel(R"({"id":2,"method":"windowsSandbox/readiness"})", R"({"status":"notConfigured"})",
            [](const Ormel& ormel) { return ormel.readWindowsSandboxReadiness(); }),
    onOrmel(R"({"id":2,"method":"windowsSandbox/readiness"})", R"({"status":"updateRequired"})",
            [](const Ormel& ormel) { return ormel.readWindowsSandboxReadiness(); }),
    onOrmel(R"({"id":2,"method":"windowsSandbox/setupStart","params":{"mode":"elevated"}})", isStarted,
            [](const Ormel& ormel) { return ormel.startWindowsSandboxSetup(WindowsSandboxSetupMode::elevated); }),
    onOrmel(R"({"id":2,"method":"windowsSandbox/setupStart","params":{"mode":"unelevated","cwd":"/w"}})",
            R"({"started":false})",
            [](const Ormel& ormel) {
              StartWindowsSandboxSetupParams params;
              params.workingDirectory = "/w";
              return ormel.startWindowsSandboxSetup(WindowsSandboxSetupMode::unelevated, params);
            }),
    onOrmel(R"({"id":2,"method":"windowsSandbox/setupStart","params":{"mode":"elevated","cwd":""}})", isStarted,
            [](const Ormel& ormel) {
              StartWindowsSandboxSetupParams params;
              params.workingDirectory = "";
              return ormel.startWindowsSandboxSetup(WindowsSandboxSetupMode::elevated, params);
            }),
};

TEST(CommandCalls, GoOutExactly) { expectCalls(commandRows); }

TEST(CommandCalls, FailByTheirRecordAndByTheServersError) { expectFailures(commandRows, commandRecords); }

}  // namespace
