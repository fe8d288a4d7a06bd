#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordDescription.h"
#include "OrmelSDK/Coding/TaggedVariant.h"
#include "TableMutants/TableMutants.h"

// Each function of the library that is called with a table is called under the second name here, and the library's own
// code stands under the third.
#define ORMEL_WRAPPED(symbol) asm("__wrap_" symbol)
#define ORMEL_REAL(symbol) asm("__real_" symbol)

namespace ormel::coding {

void wrapDecodeRecord(const RecordDescription&, void*, const JSONValue&, const CodingPath&)
    ORMEL_WRAPPED("_ZN5ormel6coding12decodeRecordERKNS0_17RecordDescriptionEPvRKNS_9JSONValueERKNS0_10CodingPathE");
void realDecodeRecord(const RecordDescription&, void*, const JSONValue&, const CodingPath&)
    ORMEL_REAL("_ZN5ormel6coding12decodeRecordERKNS0_17RecordDescriptionEPvRKNS_9JSONValueERKNS0_10CodingPathE");

void wrapEncodeMembers(const RecordDescription&, const void*, std::vector<JSONMemberInit>&) ORMEL_WRAPPED(
    "_ZN5ormel6coding13encodeMembersERKNS0_17RecordDescriptionEPKvRSt6vectorINS_14JSONMemberInitESaIS7_EE");
void realEncodeMembers(const RecordDescription&, const void*, std::vector<JSONMemberInit>&)
    ORMEL_REAL("_ZN5ormel6coding13encodeMembersERKNS0_17RecordDescriptionEPKvRSt6vectorINS_14JSONMemberInitESaIS7_EE");

JSONValue wrapEncodeRecord(const RecordDescription&, const void*)
    ORMEL_WRAPPED("_ZN5ormel6coding12encodeRecordERKNS0_17RecordDescriptionEPKv");
JSONValue realEncodeRecord(const RecordDescription&, const void*)
    ORMEL_REAL("_ZN5ormel6coding12encodeRecordERKNS0_17RecordDescriptionEPKv");

int wrapDecodeEnumeration(const EnumerationWords&, const JSONValue&, const CodingPath&)
    ORMEL_WRAPPED("_ZN5ormel6coding17decodeEnumerationERKNS0_16EnumerationWordsERKNS_9JSONValueERKNS0_10CodingPathE");
int realDecodeEnumeration(const EnumerationWords&, const JSONValue&, const CodingPath&)
    ORMEL_REAL("_ZN5ormel6coding17decodeEnumerationERKNS0_16EnumerationWordsERKNS_9JSONValueERKNS0_10CodingPathE");

std::optional<int> wrapEnumerationCase(const EnumerationWords&, std::string_view) ORMEL_WRAPPED(
    "_ZN5ormel6coding15enumerationCaseERKNS0_16EnumerationWordsESt17basic_string_viewIcSt11char_traitsIcEE");
std::optional<int> realEnumerationCase(const EnumerationWords&, std::string_view)
    ORMEL_REAL("_ZN5ormel6coding15enumerationCaseERKNS0_16EnumerationWordsESt17basic_string_viewIcSt11char_traitsIcEE");

std::string_view wrapEnumerationWord(const EnumerationWords&, int) noexcept
    ORMEL_WRAPPED("_ZN5ormel6coding15enumerationWordERKNS0_16EnumerationWordsEi");
std::string_view realEnumerationWord(const EnumerationWords&, int) noexcept
    ORMEL_REAL("_ZN5ormel6coding15enumerationWordERKNS0_16EnumerationWordsEi");

void wrapDecodeVariant(const VariantDescription&, void*, const JSONValue&, const CodingPath&)
    ORMEL_WRAPPED("_ZN5ormel6coding13decodeVariantERKNS0_18VariantDescriptionEPvRKNS_9JSONValueERKNS0_10CodingPathE");
void realDecodeVariant(const VariantDescription&, void*, const JSONValue&, const CodingPath&)
    ORMEL_REAL("_ZN5ormel6coding13decodeVariantERKNS0_18VariantDescriptionEPvRKNS_9JSONValueERKNS0_10CodingPathE");

bool wrapEncodeVariant(const VariantDescription&, std::size_t, const void*, JSONValue&)
    ORMEL_WRAPPED("_ZN5ormel6coding13encodeVariantERKNS0_18VariantDescriptionEmPKvRNS_9JSONValueE");
bool realEncodeVariant(const VariantDescription&, std::size_t, const void*, JSONValue&)
    ORMEL_REAL("_ZN5ormel6coding13encodeVariantERKNS0_18VariantDescriptionEmPKvRNS_9JSONValueE");

}  // namespace ormel::coding

namespace ormel::tests {

namespace {

using coding::EnumerationWords;
using coding::Field;
using coding::KeyPositions;
using coding::Presence;
using coding::RecordDescription;
using coding::VariantCase;
using coding::VariantDescription;
using coding::WhenEmpty;
using coding::WordFingerprint;
using coding::WordIndex;
using coding::WordRule;

/// A text that outlives every mutant.
std::string_view lasting(std::string text) {
  static std::deque<std::string> texts;
  return texts.emplace_back(std::move(text));
}

/// Finds words as the library's tables do, but made when the program runs.
class RuntimeWords {
 public:
  std::size_t add(std::string_view word) {
    const auto found = std::find(texts_.begin(), texts_.end(), word);
    if (found != texts_.end()) return static_cast<std::size_t>(found - texts_.begin());
    texts_.push_back(word);
    return texts_.size() - 1;
  }

  const WordIndex* index() {
    for (const std::string_view word : texts_) {
      std::string stored(sizeof(std::uint32_t), '\0');
      const auto size = static_cast<std::uint32_t>(word.size());
      std::memcpy(stored.data(), &size, sizeof size);
      stored += word;
      stored.append(WordFingerprint::told, '\0');
      words_.push_back({WordFingerprint::at(reinterpret_cast<const std::byte*>(stored.data())), word.data()});
    }
    slots_.resize(std::bit_ceil(4 * words_.size()));
    while (!takesMultiplier()) multiplier_ = multiplier_ * 6364136223846793005u + 1442695040888963406u;
    index_.emplace(words_.data(), words_.size(), slots_.data(), multiplier_, shift());
    return &*index_;
  }

 private:
  unsigned shift() const { return 64 - static_cast<unsigned>(std::countr_zero(slots_.size())); }

  bool takesMultiplier() {
    std::vector<bool> taken(slots_.size());
    for (std::size_t position = 0; position < words_.size(); ++position) {
      const std::uint64_t slot = words_[position].fingerprint.mixed() * multiplier_ >> shift();
      if (taken[slot]) return false;
      taken[slot] = true;
      slots_[slot] = static_cast<std::uint8_t>(position);
    }
    return true;
  }

  std::vector<std::string_view> texts_;
  std::vector<coding::IndexedWord> words_;
  std::vector<std::uint8_t> slots_;
  std::uint64_t multiplier_ = 0x9E3779B97F4A7C15u;
  std::optional<WordIndex> index_;
};

/// The tables that were used, by their addresses.
template <typename Table>
struct Tables {
  std::vector<const Table*> used;
  const Table* original = nullptr;
  const Table* changed = nullptr;

  const Table& operator()(const Table& table) {
    if (&table == original) return *changed;
    if (isCollecting && std::find(used.begin(), used.end(), &table) == used.end()) used.push_back(&table);
    return table;
  }

  static inline bool isCollecting = false;
};

Tables<RecordDescription> records;
Tables<EnumerationWords> enumerations;
Tables<VariantDescription> variants;

/// A changed table with all that it points to.
struct RecordCopy {
  explicit RecordCopy(const RecordDescription& description)
      : changed(description), fields(description.fields.begin(), description.fields.end()) {}

  const RecordDescription* finish() {
    for (const Field& field : fields) {
      KeyPositions at{};
      for (std::size_t key = 0; key < field.keyCount; ++key) {
        at[key] = static_cast<std::uint8_t>(words.add(field.keys[key]));
      }
      positions.push_back(at);
    }
    changed.fields = fields;
    changed.positions = positions.data();
    changed.keys = fields.empty() ? nullptr : words.index();
    return &changed;
  }

  RecordDescription changed;
  std::vector<Field> fields;
  std::vector<KeyPositions> positions;
  RuntimeWords words;
};

struct EnumerationCopy {
  explicit EnumerationCopy(const EnumerationWords& original)
      : changed(original), words(original.words.begin(), original.words.end()) {}

  const EnumerationWords* finish() {
    changed.words = words;
    return &changed;
  }

  EnumerationWords changed;
  std::vector<coding::Word<int>> words;
};

struct VariantCopy {
  explicit VariantCopy(const VariantDescription& original)
      : changed(original), cases(original.cases.begin(), original.cases.end()) {}

  const VariantDescription* finish() {
    for (std::size_t at = 0; at < cases.size(); ++at) {
      for (std::size_t word = 0; word < cases[at].wordCount; ++word) {
        if (words.add(cases[at].words[word]) == casesOfWords.size()) {
          casesOfWords.push_back(static_cast<std::uint8_t>(at));
        }
      }
    }
    changed.cases = cases;
    changed.words = words.index();
    changed.casesOfWords = casesOfWords.data();
    return &changed;
  }

  VariantDescription changed;
  std::vector<VariantCase> cases;
  std::vector<std::uint8_t> casesOfWords;
  RuntimeWords words;
};

class MutantList {
 public:
  template <typename Copy, typename Table, typename Change>
  void add(Tables<Table>& tables, const Table& original, std::string what, Change change) {
    const auto copy = std::make_shared<Copy>(original);
    change(*copy);
    const Table* changed = copy->finish();
    mutants_.push_back({std::string(original.name), std::move(what), "", "", [&tables, &original, changed, copy] {
                          tables.original = &original;
                          tables.changed = changed;
                        }});
  }

  TableMutant& last() { return mutants_.back(); }

  std::vector<TableMutant> take() { return std::move(mutants_); }

 private:
  std::vector<TableMutant> mutants_;
};

void addFieldMutants(const RecordDescription& record, std::size_t at, MutantList& mutants) {
  const Field& original = record.fields[at];
  const auto add = [&](const std::string& what, const auto& change) {
    mutants.add<RecordCopy>(records, record, std::string(original.keys[0]) + " " + what,
                            [&](RecordCopy& copy) { change(copy.fields[at]); });
  };
  for (std::size_t key = 0; key < original.keyCount; ++key) {
    const std::string misspelt = std::string(original.keys[key]) + "e";
    add("misspelt " + misspelt, [&](Field& field) { field.keys[key] = lasting(misspelt); });
    if (key > 0) add("with swapped keys", [&](Field& field) { std::swap(field.keys[key - 1], field.keys[key]); });
  }
  if (original.keyCount > 1) add("without its last key", [](Field& field) { --field.keyCount; });
  add("written misspelt", [&](Field& field) { field.writtenKey = lasting(std::string(field.writtenKey) + "e"); });
  for (std::size_t key = 0; key < original.keyCount; ++key) {
    if (original.keys[key] == original.writtenKey) continue;
    add("written under another key", [&](Field& field) { field.writtenKey = field.keys[key]; });
  }
  add("with another presence", [](Field& field) {
    field.presence = field.presence == Presence::required ? Presence::defaulted : Presence::required;
  });
  for (const auto form : {WhenEmpty::written, WhenEmpty::omitted, WhenEmpty::null}) {
    const bool cannotBeWritten = original.presence == Presence::optional && form == WhenEmpty::written;
    if (form == original.whenEmpty || cannotBeWritten) continue;
    add("with another form when empty", [&](Field& field) { field.whenEmpty = form; });
    mutants.last().emptyField = original.keys[0];
  }
}

void addRecordMutants(const RecordDescription& record, MutantList& mutants) {
  const auto fields = record.fields;
  for (std::size_t at = 0; at < fields.size(); ++at) {
    addFieldMutants(record, at, mutants);
    if (fields.size() > 1) {
      mutants.add<RecordCopy>(records, record, std::string(fields[at].keys[0]) + " left out", [&](RecordCopy& copy) {
        copy.fields.erase(copy.fields.begin() + static_cast<std::ptrdiff_t>(at));
      });
    }
    for (std::size_t other = 0; other < at; ++other) {
      if (fields[at].coder != fields[other].coder) continue;
      mutants.add<RecordCopy>(
          records, record,
          std::string(fields[other].keys[0]) + " and " + std::string(fields[at].keys[0]) + " for each other",
          [&](RecordCopy& copy) { std::swap(copy.fields[at].place, copy.fields[other].place); });
    }
  }
  const bool writesTypeField =
      std::any_of(fields.begin(), fields.end(), [](const Field& field) { return field.writtenKey == "type"; });
  if (writesTypeField) return;
  mutants.add<RecordCopy>(records, record, "another type", [](RecordCopy& copy) {
    copy.changed.writtenType = copy.changed.writtenType.empty() ? "otherType" : "";
  });
}

void addEnumerationMutants(const EnumerationWords& enumeration, MutantList& mutants) {
  const auto add = [&](std::string what, const auto& change) {
    mutants.add<EnumerationCopy>(enumerations, enumeration, std::move(what), change);
  };
  for (std::size_t at = 0; at < enumeration.words.size(); ++at) {
    const std::string word(enumeration.words[at].text);
    add(word + " misspelt", [&](EnumerationCopy& copy) { copy.words[at].text = lasting(word + "e"); });
    if (at == 0) continue;
    add(word + " for the word before",
        [&](EnumerationCopy& copy) { std::swap(copy.words[at - 1].text, copy.words[at].text); });
    if (enumeration.words[at].value == enumeration.words[0].value) continue;
    add(word + " as the first case", [&](EnumerationCopy& copy) { copy.words[at].value = copy.words[0].value; });
  }
  for (const WordRule rule : {WordRule::closed, WordRule::exact, WordRule::tolerant}) {
    if (rule != enumeration.rule) add("another rule", [&](EnumerationCopy& copy) { copy.changed.rule = rule; });
  }
  if (enumeration.rule == WordRule::closed) return;
  for (const auto& word : enumeration.words) {
    if (word.value == enumeration.fallback) continue;
    add("the fallback " + std::string(word.text), [&](EnumerationCopy& copy) { copy.changed.fallback = word.value; });
  }
}

void addVariantMutants(const VariantDescription& variant, MutantList& mutants) {
  for (std::size_t at = 0; at < variant.cases.size(); ++at) {
    const VariantCase& original = variant.cases[at];
    const auto add = [&](const std::string& what, const auto& change) {
      mutants.add<VariantCopy>(variants, variant, std::string(original.words[0]) + " " + what,
                               [&](VariantCopy& copy) { change(copy.cases[at]); });
    };
    for (std::size_t word = 0; word < original.wordCount; ++word) {
      add("misspelt " + std::string(original.words[word]),
          [&](VariantCase& changed) { changed.words[word] = lasting(std::string(changed.words[word]) + "e"); });
    }
    if (original.wordCount > 1 && original.writesType) {
      add("with swapped words", [](VariantCase& changed) { std::swap(changed.words[0], changed.words[1]); });
      mutants.last().writtenCase = original.words[0];
    }
    if (original.wordCount > 1) add("without its second word", [](VariantCase& changed) { --changed.wordCount; });
    add(original.writesType ? "without type" : "with a type",
        [](VariantCase& changed) { changed.writesType = !changed.writesType; });
    mutants.last().writtenCase = original.words[0];
    if (at == 0 || variant.cases[at - 1].words == original.words) continue;
    mutants.add<VariantCopy>(variants, variant, std::string(original.words[0]) + " for the case before",
                             [&](VariantCopy& copy) {
                               std::swap(copy.cases[at - 1].words, copy.cases[at].words);
                               std::swap(copy.cases[at - 1].wordCount, copy.cases[at].wordCount);
                             });
  }
}

}  // namespace

void collectTables() {
  Tables<RecordDescription>::isCollecting = true;
  Tables<EnumerationWords>::isCollecting = true;
  Tables<VariantDescription>::isCollecting = true;
}

void deactivateMutant() {
  records.original = nullptr;
  enumerations.original = nullptr;
  variants.original = nullptr;
}

std::vector<TableMutant> tableMutants() {
  MutantList mutants;
  for (const auto* record : records.used) addRecordMutants(*record, mutants);
  for (const auto* enumeration : enumerations.used) addEnumerationMutants(*enumeration, mutants);
  for (const auto* variant : variants.used) addVariantMutants(*variant, mutants);
  return mutants.take();
}

}  // namespace ormel::tests

namespace ormel::coding {

void wrapDecodeRecord(const RecordDescription& description, void* record, const JSONValue& value,
                      const CodingPath& path) {
  realDecodeRecord(tests::records(description), record, value, path);
}
void wrapEncodeMembers(const RecordDescription& description, const void* record, std::vector<JSONMemberInit>& members) {
  realEncodeMembers(tests::records(description), record, members);
}
JSONValue wrapEncodeRecord(const RecordDescription& description, const void* record) {
  return realEncodeRecord(tests::records(description), record);
}
int wrapDecodeEnumeration(const EnumerationWords& words, const JSONValue& value, const CodingPath& path) {
  return realDecodeEnumeration(tests::enumerations(words), value, path);
}
std::optional<int> wrapEnumerationCase(const EnumerationWords& words, std::string_view text) {
  return realEnumerationCase(tests::enumerations(words), text);
}
std::string_view wrapEnumerationWord(const EnumerationWords& words, int value) noexcept {
  return realEnumerationWord(tests::enumerations(words), value);
}
void wrapDecodeVariant(const VariantDescription& description, void* variant, const JSONValue& value,
                       const CodingPath& path) {
  realDecodeVariant(tests::variants(description), variant, value, path);
}
bool wrapEncodeVariant(const VariantDescription& description, std::size_t alternative, const void* variant,
                       JSONValue& encoded) {
  return realEncodeVariant(tests::variants(description), alternative, variant, encoded);
}

}  // namespace ormel::coding
