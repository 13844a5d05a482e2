#pragma once

// Keys of a document that a record does not read itself. Records keep them so that
// writing a record read from the daemon gives the daemon's unknown members back
// unchanged (a get-modify-set round trip loses nothing).

#include <json/json.h>

#include <initializer_list>

namespace pimav::detail {

// Replaces `store` with the members of `in` whose key is not in `known`. A document
// that is not an object keeps nothing.
void keepUnknownKeys(const Json::Value& in, std::initializer_list<const char*> known, Json::Value& store);

// Writes every kept member into `out` (out[key] = value).
void writeKeptKeys(const Json::Value& store, Json::Value& out);

}  // namespace pimav::detail
