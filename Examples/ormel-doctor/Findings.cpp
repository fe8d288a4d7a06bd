#include "Findings.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Text/UTF8.h"
#include "ormel-control/TerminalText.h"

namespace ormel::doctor {

namespace {

constexpr std::size_t originColumns = 30;
constexpr std::size_t valueColumns = 100;

std::int64_t milliseconds(std::chrono::nanoseconds duration) {
  return std::chrono::round<std::chrono::milliseconds>(duration).count();
}

std::string padded(std::string text, std::size_t columns) {
  if (text.size() < columns) text.append(columns - text.size(), ' ');
  return text;
}

/// "no such file", and what is known besides.
std::string verdictText(const ExecutableFinding& finding) {
  std::string text(executableVerdictText(finding.verdict));
  if (finding.verdict == ExecutableVerdict::wrongArchitecture) text += ": it is for " + finding.detail;
  if (finding.verdict == ExecutableVerdict::badInterpreter) text += ": " + finding.detail;
  return text;
}

void addLine(std::string& text, std::string_view label, std::string_view value) {
  text += padded(std::string(label), 13) + control::onOneLine(value) + '\n';
}

void addCandidates(std::string& text, const std::vector<Diagnosis::Candidate>& candidates) {
  text += "Looked at (* is the one in use):\n";
  for (const Diagnosis::Candidate& candidate : candidates) {
    text += candidate.isSelected ? "  * " : "    ";
    text += padded(candidate.origin, originColumns);
    text += control::onOneLine(candidate.finding.path + ": " + verdictText(candidate.finding)) + '\n';
  }
}

void addEnvironment(std::string& text, const std::map<std::string, std::string>& environment) {
  text += "Environment of the server:\n";
  for (const auto& [name, value] : environment) {
    text += "    ";
    std::string assignment = name;
    assignment += '=';
    assignment += value;
    text += control::cutTo(valueColumns, control::onOneLine(assignment));
    text += '\n';
  }
}

std::string text(const Diagnosis& diagnosis) {
  std::string text;
  addCandidates(text, diagnosis.candidates);
  addEnvironment(text, diagnosis.environment);
  addLine(text, "Server:", diagnosis.executablePath);
  addLine(text, "Handshake:", diagnosis.handshake ? diagnosis.handshake->encode() : "none");
  addLine(text, "Version:", diagnosis.version.value_or("unknown"));
  addLine(text, "Time:", std::to_string(milliseconds(diagnosis.duration)) + " ms");
  if (!diagnosis.errorOutput.empty()) addLine(text, "It said:", diagnosis.errorOutput);
  addLine(text, "Usable:", diagnosis.isUsable ? "yes" : "no");
  if (!diagnosis.problem.empty()) text += '\n' + control::onManyLines(diagnosis.problem) + '\n';
  if (!diagnosis.advice.empty()) text += '\n' + control::onManyLines(diagnosis.advice) + '\n';
  return text;
}

JSONValue textValue(std::string_view text) { return JSONValue(repairedUTF8(text)); }

JSONValue document(const Diagnosis::Candidate& candidate) {
  JSONObjectBuilder object;
  object.set("origin", textValue(candidate.origin))
      .set("path", textValue(candidate.finding.path))
      .set("verdict", textValue(executableVerdictText(candidate.finding.verdict)))
      .set("detail", textValue(candidate.finding.detail))
      .set("selected", candidate.isSelected);
  return object.build();
}

JSONValue document(const Diagnosis& diagnosis) {
  std::vector<JSONValue> candidates;
  candidates.reserve(diagnosis.candidates.size());
  for (const Diagnosis::Candidate& candidate : diagnosis.candidates) candidates.push_back(document(candidate));
  JSONObjectBuilder environment;
  for (const auto& [name, value] : diagnosis.environment) environment.set(repairedUTF8(name), textValue(value));
  JSONObjectBuilder object;
  object.set("usable", diagnosis.isUsable)
      .set("executablePath", textValue(diagnosis.executablePath))
      .set("named", diagnosis.isNamed)
      .set("candidates", JSONValue::array(candidates))
      .set("handshake", diagnosis.handshake)
      .set("environment", environment.build())
      .set("problem", textValue(diagnosis.problem))
      .set("advice", textValue(diagnosis.advice))
      .set("errorOutput", textValue(diagnosis.errorOutput))
      .set("durationMs", milliseconds(diagnosis.duration));
  if (diagnosis.version) object.set("version", textValue(*diagnosis.version));
  return object.build();
}

}  // namespace

control::Report findings(const Diagnosis& diagnosis) {
  control::Report report;
  report.document = document(diagnosis);
  report.text = text(diagnosis);
  report.status = diagnosis.isUsable ? 0 : 1;
  return report;
}

}  // namespace ormel::doctor
