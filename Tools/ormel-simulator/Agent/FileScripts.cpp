#include <utility>

#include "ormel-simulator/Agent/Approval.h"
#include "ormel-simulator/Agent/RequestScripts.h"

namespace ormel::simulator {

namespace {

struct FileChange {
  AgentTurn& turn;
  std::string id;
  std::string path;
  bool isNew;

  JSONObjectBuilder item(const char* status) const {
    const JSONValue kind = JSONValue::object({{"type", isNew ? "add" : "update"}});
    const JSONValue change = JSONValue::object({{"path", path}, {"kind", kind}, {"diff", diff()}});
    JSONObjectBuilder members;
    members.set("type", "fileChange").set("id", id).set("status", status);
    return members.set("changes", JSONValue::array({change}));
  }

  std::string diff() const { return isNew ? "a new line\n" : "@@ -1 +1 @@\n-an old line\n+a new line\n"; }
};

void endFileChange(const FileChange& change, Approval approval) {
  AgentTurn& turn = change.turn;
  turn.completeItem(change.item(approval == Approval::accepted ? "completed" : "declined"));
  if (approval == Approval::cancelled) return turn.finish("interrupted");
  const std::string verb = change.isNew ? "written" : "edited";
  turn.say(approval == Approval::accepted ? "I have " + verb + " " + change.path + ", or would have."
                                          : "You declined, so I have not " + verb + " " + change.path + ".");
}

void playFileChange(AgentTurn& turn, const std::string& file, bool isNew) {
  const FileChange change{turn, turn.newItemID("change"), file.empty() ? "notes.txt" : file, isNew};
  turn.then([&turn, change] {
    turn.startItem(change.item("inProgress"));
    JSONObjectBuilder members;
    members.set("itemId", change.id).set("reason", "You asked me to change it");
    askApproval(turn, "item/fileChange/requestApproval", members,
                [change](Approval approval) { endFileChange(change, approval); });
  });
}

}  // namespace

void playEdit(AgentTurn& turn, const ScriptArgument& argument) { playFileChange(turn, argument.word, false); }

void playWrite(AgentTurn& turn, const ScriptArgument& argument) { playFileChange(turn, argument.word, true); }

}  // namespace ormel::simulator
