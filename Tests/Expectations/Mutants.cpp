#include "Expectations/Mutants.h"

#include <algorithm>
#include <utility>

namespace ormel::tests {

namespace {

using Rule = ExpectedField::Rule;
using Shape = ExpectedType::Shape;

class Mutation {
 public:
  explicit Mutation(const Definition& definition) : original_(definition) {}

  std::vector<Mutant> all() {
    for (std::size_t at = 0; at < original_.fields.size(); ++at) mutateField(at);
    for (std::size_t at = 0; at < original_.words.size(); ++at) mutateWord(at);
    for (std::size_t at = 0; at < original_.cases.size(); ++at) mutateCase(at);
    for (std::size_t at = 0; at < original_.readings.size(); ++at) mutateReading(at);
    mutateRest();
    return std::move(mutants_);
  }

 private:
  template <typename Change>
  void add(const std::string& what, Change change) {
    Mutant mutant{original_.name + " with " + what, original_, std::nullopt};
    change(mutant.definition);
    mutants_.push_back(std::move(mutant));
  }

  template <typename Change>
  void addToField(std::size_t at, const std::string& what, Change change) {
    add(original_.fields[at].name + " " + what, [&](Definition& definition) { change(definition.fields[at]); });
    mutants_.back().field = at;
  }

  void mutateField(std::size_t at) {
    const ExpectedField& field = original_.fields[at];
    for (std::size_t key = 0; key < field.keys.size(); ++key) {
      addToField(at, "misspelt " + field.keys[key], [&](ExpectedField& changed) {
        if (changed.writtenKey == changed.keys[key]) changed.writtenKey += "e";
        changed.keys[key] += "e";
      });
      if (key == 0) continue;
      addToField(at, "keys swapped",
                 [&](ExpectedField& changed) { std::swap(changed.keys[key - 1], changed.keys[key]); });
      addToField(at, "without " + field.keys[key], [&](ExpectedField& changed) {
        changed.keys.erase(changed.keys.begin() + static_cast<std::ptrdiff_t>(key));
      });
      addToField(at, "written " + field.keys[key], [&](ExpectedField& changed) {
        changed.writtenKey = changed.writtenKey == changed.keys[key] ? changed.keys.front() : changed.keys[key];
      });
    }
    addToField(at, "misnamed", [](ExpectedField& changed) { changed.name += "e"; });
    addToField(at, "written otherwise", [](ExpectedField& changed) { changed.writtenKey += "e"; });
    addToField(at, "with one key more", [](ExpectedField& changed) { changed.keys.push_back("otherKey"); });
    add(field.name + " left out", [&](Definition& definition) {
      definition.fields.erase(definition.fields.begin() + static_cast<std::ptrdiff_t>(at));
    });
    mutateRule(at);
    mutateShape(at);
  }

  void mutateRule(std::size_t at) {
    const ExpectedField& field = original_.fields[at];
    const bool isRequired = field.rule == Rule::required;
    addToField(at, isRequired ? "optional" : "required",
               [&](ExpectedField& changed) { changed.rule = isRequired ? Rule::optional : Rule::required; });
    if (field.rule == Rule::optional) {
      addToField(at, "written as null", [](ExpectedField& changed) { changed.rule = Rule::nullWhenAbsent; });
    } else if (field.rule == Rule::defaulted) {
      // A variant's case does not tell an absent list from an empty one that is never written.
      const bool wouldShow = !field.isOmittedWhenEmpty || original_.kind == Definition::Kind::record;
      if (wouldShow) addToField(at, "optional", [](ExpectedField& changed) { changed.rule = Rule::optional; });
      addToField(at, "with another default", [](ExpectedField& changed) { changed.fallback = "other"; });
    }
    const bool canBeEmpty = field.type.shape != Shape::single || field.type.name == "text";
    if (!canBeEmpty) return;
    addToField(at, "otherwise when empty",
               [](ExpectedField& changed) { changed.isOmittedWhenEmpty = !changed.isOmittedWhenEmpty; });
  }

  void mutateShape(std::size_t at) {
    const ExpectedType& type = original_.fields[at].type;
    if (type.shape == Shape::list && type.name != "json") {
      addToField(at, "lossy", [](ExpectedField& changed) { changed.type.shape = Shape::lossyList; });
    } else if (type.shape == Shape::lossyList) {
      addToField(at, "not lossy", [](ExpectedField& changed) { changed.type.shape = Shape::list; });
    }
    if (type.name == "int") addToField(at, "a number", [](ExpectedField& changed) { changed.type.name = "number"; });
    if (type.name == "number") addToField(at, "an int", [](ExpectedField& changed) { changed.type.name = "int"; });
    if (type.name == "text") addToField(at, "a json", [](ExpectedField& changed) { changed.type.name = "json"; });
  }

  void mutateWord(std::size_t at) {
    const std::string& name = original_.words[at].caseName;
    const bool isAnyWord = original_.words[at].word == anyWord;
    if (!isAnyWord) add(name + " misspelt", [&](Definition& definition) { definition.words[at].word += "e"; });
    add(name + " misnamed", [&](Definition& definition) { definition.words[at].caseName += "e"; });
    const bool isSecondWord = at > 0 && original_.words[at - 1].caseName == name;
    if (isSecondWord) {
      // Nothing asks for a second word that is not expected, so that leaving it out would not show.
      add(name + " written otherwise", [&](Definition& definition) {
        std::swap(definition.words[at - 1].isWritten, definition.words[at].isWritten);
      });
      return;
    }
    add(name + " left out", [&](Definition& definition) {
      definition.words.erase(definition.words.begin() + static_cast<std::ptrdiff_t>(at));
    });
    if (at == 0 || isAnyWord) return;
    add(name + " swapped",
        [&](Definition& definition) { std::swap(definition.words[at - 1].word, definition.words[at].word); });
  }

  void mutateCase(std::size_t at) {
    const ExpectedCase& original = original_.cases[at];
    const auto addToCase = [&](const std::string& what, const auto& change) {
      add(original.alternative + " " + what, [&](Definition& definition) { change(definition.cases[at]); });
    };
    for (std::size_t word = 0; word < original.words.size(); ++word) {
      addToCase("misspelt " + original.words[word], [&](ExpectedCase& changed) { changed.words[word] += "e"; });
    }
    addToCase("in another alternative", [](ExpectedCase& changed) { changed.alternative += "e"; });
    addToCase("written otherwise", [](ExpectedCase& changed) {
      changed.writtenWord = changed.writtenWord ? std::nullopt : std::optional(changed.words.front());
    });
    addToCase("with another word", [](ExpectedCase& changed) { changed.words.push_back("otherWord"); });
  }

  void mutateReading(std::size_t at) {
    add("example " + std::to_string(at) + " otherwise", [&](Definition& definition) {
      ExpectedReading& changed = definition.readings[at];
      if (changed.refusal == ExpectedReading::Refused::asMismatch) {
        changed.refusal.reset();
      } else if (changed.refusal) {
        changed.failure += "e";
      } else {
        changed.written = JSONValue::array({changed.written});
      }
    });
  }

  void mutateRest() {
    using UnknownRule = ExpectedUnknown::Rule;
    using DefinitionKind = Definition::Kind;
    const bool writesOwnType = std::any_of(original_.fields.begin(), original_.fields.end(),
                                           [](const auto& field) { return field.writtenKey == "type"; });
    if (original_.kind == DefinitionKind::record && !writesOwnType) {
      add("another type", [](Definition& definition) {
        definition.writtenType = definition.writtenType ? std::nullopt : std::optional<std::string>("otherType");
      });
    }
    if (original_.isEnumeration()) {
      for (const DefinitionKind kind : {DefinitionKind::closed, DefinitionKind::tolerant, DefinitionKind::exact}) {
        const bool isTolerant = kind == DefinitionKind::tolerant;
        // Closed and exact words differ only in what `unknown` says of all others.
        if (isTolerant == (original_.kind == DefinitionKind::tolerant)) continue;
        add("other strictness", [&](Definition& definition) { definition.kind = kind; });
      }
      add(original_.within ? "no object" : "an object", [](Definition& definition) {
        definition.within = definition.within ? std::nullopt : std::optional<std::string>("within");
      });
    }
    if (!original_.isEnumeration() && original_.kind != DefinitionKind::variant) return;
    add("other unknown words", [](Definition& definition) {
      if (definition.unknown.rule == UnknownRule::isCase || definition.unknown.rule == UnknownRule::keepsType) {
        definition.unknown.name += "e";
      } else {
        definition.unknown.failure += "e";
      }
    });
  }

  const Definition& original_;
  std::vector<Mutant> mutants_;
};

}  // namespace

std::vector<Mutant> mutantsOf(const Definition& definition) { return Mutation(definition).all(); }

}  // namespace ormel::tests
