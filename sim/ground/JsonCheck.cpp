#include "JsonCheck.h"

#include <algorithm>
#include <cstring>

#include "Errors.h"

namespace tvsim::json_check {

namespace {

[[noreturn]] void Refuse(const std::string& pointer, const std::string& problem) {
  throw ScenarioError("", pointer, problem);
}

std::string TypeName(const json& value) { return value.type_name(); }

}  // namespace

std::string Child(const std::string& pointer, const std::string& key) {
  std::string escaped;
  for (char c : key) {
    if (c == '~') {
      escaped += "~0";
    } else if (c == '/') {
      escaped += "~1";
    } else {
      escaped += c;
    }
  }
  return pointer + "/" + escaped;
}

std::string Child(const std::string& pointer, size_t index) { return pointer + "/" + std::to_string(index); }

void Object(const json& value, const std::string& pointer, std::initializer_list<const char*> allowed,
            std::initializer_list<const char*> required) {
  if (!value.is_object()) Refuse(pointer, "expected an object, found " + TypeName(value));
  for (const auto& member : value.items()) {
    const bool known = std::any_of(allowed.begin(), allowed.end(),
                                   [&](const char* name) { return member.key() == name; });
    if (!known) Refuse(Child(pointer, member.key()), "unknown member \"" + member.key() + "\"");
  }
  for (const char* name : required) {
    if (!value.contains(name)) Refuse(pointer, std::string("missing member \"") + name + "\"");
  }
}

void Array(const json& value, const std::string& pointer) {
  if (!value.is_array()) Refuse(pointer, "expected an array, found " + TypeName(value));
}

int64_t Int(const json& value, const std::string& pointer, int64_t min, int64_t max) {
  if (!value.is_number_integer()) Refuse(pointer, "expected an integer, found " + TypeName(value));
  if (value.is_number_unsigned() && value.get<uint64_t>() > static_cast<uint64_t>(INT64_MAX)) {
    Refuse(pointer, "value out of range " + std::to_string(min) + ".." + std::to_string(max));
  }
  const int64_t number = value.get<int64_t>();
  if (number < min || number > max) {
    Refuse(pointer, std::to_string(number) + " is out of range " + std::to_string(min) + ".." + std::to_string(max));
  }
  return number;
}

bool Bool(const json& value, const std::string& pointer) {
  if (!value.is_boolean()) Refuse(pointer, "expected true or false, found " + TypeName(value));
  return value.get<bool>();
}

std::string String(const json& value, const std::string& pointer) {
  if (!value.is_string()) Refuse(pointer, "expected a string, found " + TypeName(value));
  const std::string& text = value.get_ref<const std::string&>();
  if (text.find('\0') != std::string::npos) Refuse(pointer, "a NUL character inside a string");
  return text;
}

uint64_t Id(const json& value, const std::string& pointer) {
  if (!value.is_number_integer()) Refuse(pointer, "expected a service id (integer), found " + TypeName(value));
  if (!value.is_number_unsigned() && value.get<int64_t>() < 0) {
    Refuse(pointer, "a service id is not negative");
  }
  const uint64_t id = value.get<uint64_t>();
  if (id == 0) Refuse(pointer, "0 is not a service id");
  return id;
}

}  // namespace tvsim::json_check
