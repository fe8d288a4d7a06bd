#pragma once

#include <iterator>
#include <memory>
#include <optional>
#include <ranges>
#include <string>
#include <utility>

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Management/Call.h"
#include "OrmelSDK/Management/ControlSession.h"
#include "OrmelSDK/Management/ReplyPlace.h"

namespace ormel::detail {

template <typename Page, typename Params>
Task<decltype(Page::data)> walkPages(std::shared_ptr<ControlSession> session, Call<Page> (*call)(const Params&),
                                     Params params) {
  decltype(Page::data) all;
  do {
    std::optional<Page> page;
    Call<Page> asking = call(params);
    auto performing = session->perform(std::string(asking.method), std::move(asking.params), ReplyPlace(page));
    co_await std::move(performing);
    std::ranges::move(page->data, std::back_inserter(all));
    params.cursor = std::move(page->nextCursor);
  } while (params.cursor);
  co_return std::move(all);
}

/// The elements of all pages, in the order in which they come. `params` are those of the first page; the others differ
/// in the cursor. Only a page without a next cursor is the last: an empty page is not, and a cursor may be empty too.
///
/// Each page is a call of its own, so that a walk goes on with the session's next client when another call has cost it
/// the one before. It fails as its call does, and then tells nothing of the pages before.
template <typename Page, typename Params>
Task<decltype(Page::data)> allPages(const std::shared_ptr<ControlSession>& session, Call<Page> (*call)(const Params&),
                                    Params params) {
  return walkPages(session, call, std::move(params)).onStrand(session->strand());
}

}  // namespace ormel::detail
