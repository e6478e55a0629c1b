// Checks of scenario JSON values; each failure throws ScenarioError with the
// value's JSON pointer (the file is filled in by the caller).
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <initializer_list>
#include <string>

namespace tvsim::json_check {

using nlohmann::json;

// pointer + "/" + key, with "~" and "/" escaped as RFC 6901 asks.
std::string Child(const std::string& pointer, const std::string& key);
std::string Child(const std::string& pointer, size_t index);

// value is an object whose members are all among allowed; required ones must be there.
void Object(const json& value, const std::string& pointer, std::initializer_list<const char*> allowed,
            std::initializer_list<const char*> required = {});
void Array(const json& value, const std::string& pointer);

int64_t Int(const json& value, const std::string& pointer, int64_t min, int64_t max);
bool Bool(const json& value, const std::string& pointer);
std::string String(const json& value, const std::string& pointer);
// A service id: an integer from 1 to 2^64-1.
uint64_t Id(const json& value, const std::string& pointer);

}  // namespace tvsim::json_check
