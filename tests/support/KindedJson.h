#pragma once

// JSON expectations that keep the kind of every value. The daemon reads documents with
// typed accessors, so 5 (int), 5u (unsigned), 5.0 (real) and "5" (string) are four
// different answers. In an expected document an unsigned integer carries a `u` suffix;
// everything else is plain JSON, and jsoncpp reads a number as int unless it has a
// fraction or exponent (real) or is above the int64 range (unsigned).

#include <json/json.h>

#include <string>

// Parses expected JSON with `u` suffixes; throws std::runtime_error on malformed text.
Json::Value kindedJsonOf(const std::string& text);

// One-line text of a document in the same notation: unsigned integers with `u`, reals
// always with a '.' or an exponent, members in key order.
std::string kindedText(const Json::Value& value);

// Empty when `actual` equals `expected` kind for kind; with `subset`, objects of
// `expected` need only their own members in `actual` and arrays only their length, each
// element compared the same way. Otherwise the first difference.
std::string kindedMismatch(const Json::Value& expected, const Json::Value& actual, bool subset = false);
