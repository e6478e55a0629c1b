// Service (channel) records and the queries that select them.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "TvMode.h"

// Attribute identifiers of a service record.
enum ServiceAttribute : int {
  ATTR_NUMBER_KIND = 1,
  ATTR_SERVICE_ID = 12,
  ATTR_MAJOR_NUMBER = 13,
  ATTR_MINOR_NUMBER = 14,
};

// One attribute value. 16- and 32-bit attributes are read as stored; the 64-bit
// service id is read through GetValuePointer().
class ServiceAttributeValue {
 public:
  explicit ServiceAttributeValue(uint64_t value) : m_nValue(value) {}
  virtual ~ServiceAttributeValue() = default;

  uint16_t GetUint16() const { return static_cast<uint16_t>(m_nValue); }
  int32_t GetInt32() const { return static_cast<int32_t>(m_nValue); }
  uint32_t GetStored32() const { return static_cast<uint32_t>(m_nValue); }
  virtual const uint64_t* GetValuePointer() const { return &m_nValue; }

 private:
  uint64_t m_nValue;
};

class ServiceAttributeTable {
 public:
  virtual ~ServiceAttributeTable() = default;

  // The attribute, or null when the record does not carry it.
  virtual const ServiceAttributeValue* GetAttribute(int id) const {
    auto it = m_attributes.find(id);
    return it == m_attributes.end() ? nullptr : &it->second;
  }
  void SetAttribute(int id, uint64_t value) {
    m_attributes.erase(id);
    m_attributes.emplace(id, ServiceAttributeValue(value));
  }
  void RemoveAttribute(int id) { m_attributes.erase(id); }

 private:
  std::map<int, ServiceAttributeValue> m_attributes;
};

// One broadcast service as the middleware delivers it. Owned by the caller;
// its attribute table may be absent.
class ServiceData : public RecordBase {
 public:
  ServiceData() = default;
  ServiceData(const ServiceData& other) : RecordBase(other) { *this = other; }
  ServiceData& operator=(const ServiceData& other) {
    if (this != &other) {
      m_pAttributes = other.m_pAttributes ? std::make_unique<ServiceAttributeTable>(*other.m_pAttributes)
                                          : nullptr;
    }
    return *this;
  }
  ~ServiceData() override = default;

  ServiceAttributeTable* GetAttributeTable() const { return m_pAttributes.get(); }
  void SetAttributeTable(std::unique_ptr<ServiceAttributeTable> table) { m_pAttributes = std::move(table); }

 private:
  std::unique_ptr<ServiceAttributeTable> m_pAttributes;
};

// The criteria of a service lookup: the attributes wanted and the conditions.
class ServiceQuery : public RecordBase {
 public:
  void Fetch(int attributeId) { m_vecFetch.push_back(attributeId); }
  void Where(int attributeId, const uint64_t& value) { m_vecWhere.emplace_back(attributeId, value); }

  const std::vector<int>& FetchedAttributes() const { return m_vecFetch; }
  const std::vector<std::pair<int, uint64_t>>& Conditions() const { return m_vecWhere; }

  // Set by NavigationQueries::GetNavigationCriteria; -1 when not a navigation query.
  int32_t m_nNavigationMode = -1;
  int32_t m_nSortMode = -1;

 private:
  std::vector<int> m_vecFetch;
  std::vector<std::pair<int, uint64_t>> m_vecWhere;
};

class NavigationQueries {
 public:
  // Fills query with the criteria of a navigation mode; returns 0 on success.
  static int GetNavigationCriteria(NavigationMode mode, ServiceQuery& query, NavigationSortMode sort);
};
