// Programme information of the TV's programme guide.
#pragma once

#include <cstdint>
#include <string>

class ProgramInfo {
 public:
  ProgramInfo() = default;
  ~ProgramInfo() = default;
  std::string Title() const { return m_strTitle; }
  void SetTitle(const std::string& title) { m_strTitle = title; }

 private:
  std::string m_strTitle;
};

class ProgramGuide {
 public:
  static ProgramGuide* GetInstance();
  virtual ~ProgramGuide() = default;
  // Non-zero when out holds the programme now on air on that service.
  virtual int GetPresentProgram(uint64_t serviceId, ProgramInfo& out) = 0;
};
