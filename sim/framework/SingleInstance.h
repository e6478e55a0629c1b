// One running application per simulated TV: the first process listens on an
// abstract unix socket named after the TV's database; a second start connects,
// forwards its launch request and ends.
#pragma once

#include <Ecore.h>

#include <functional>
#include <string>

namespace tvsim {

class SingleInstance {
 public:
  enum class Role { kFirst, kForwarded, kError };

  // `tvId` names the TV (its database path); onLaunch runs on the main loop for
  // each launch request another process forwards.
  SingleInstance(const std::string& tvId, std::function<void()> onLaunch);
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  // Before the main loop: either this process becomes the TV's instance (kFirst),
  // or the request went to the running one (kForwarded). kError when neither
  // worked; the caller then runs on its own.
  Role Claim();
  // Needs ecore: forwarded requests are read from the main loop from now on.
  void Listen();
  // Before ecore shuts down: stops listening and gives the name up.
  void Close();

  // The socket name (without the leading zero byte), for diagnostics and tests.
  const std::string& Name() const { return m_name; }

 private:
  static Eina_Bool OnReadable(void* data, Ecore_Fd_Handler* handler);
  bool Forward();

  std::string m_name;
  std::function<void()> m_onLaunch;
  int m_fd = -1;
  Ecore_Fd_Handler* m_handler = nullptr;
};

}  // namespace tvsim
