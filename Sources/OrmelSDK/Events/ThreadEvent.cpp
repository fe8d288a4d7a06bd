#include "OrmelSDK/Events/ThreadEvent.h"

#include <string>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Events/ThreadEventTables.h"

namespace ormel {

ThreadEvent::ThreadEvent() = default;
ThreadEvent::ThreadEvent(const ThreadEvent&) = default;
ThreadEvent::ThreadEvent(ThreadEvent&&) noexcept = default;
ThreadEvent& ThreadEvent::operator=(const ThreadEvent&) = default;
ThreadEvent& ThreadEvent::operator=(ThreadEvent&&) noexcept = default;
ThreadEvent::~ThreadEvent() = default;

}  // namespace ormel

namespace ormel::coding {

ThreadEvent VariantTable<ThreadEvent>::decodeUnknown(std::string_view type, const JSONValue&, const CodingPath&) {
  return UnknownThreadEvent{std::string(type)};
}

JSONValue VariantTable<ThreadEvent>::encodeUnknown(const ThreadEvent& event) {
  return Codec<UnknownThreadEvent>::encode(std::get<UnknownThreadEvent>(event.value));
}

}  // namespace ormel::coding

ORMEL_DEFINE_RECORD(UnknownThreadEvent)
ORMEL_DEFINE_VARIANT(ThreadEvent)
