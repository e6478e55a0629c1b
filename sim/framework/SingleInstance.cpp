#include "SingleInstance.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tvsim {
namespace {

// Abstract names are limited to 107 bytes: name the socket after a hash of the
// absolute path (FNV-1a, stable across builds and executables).
std::string SocketName(const std::string& tvId) {
  std::string path = tvId;
  if (char* real = realpath(tvId.c_str(), nullptr)) {
    path = real;
    std::free(real);
  }
  uint64_t hash = 14695981039346656037ull;
  for (unsigned char c : path) hash = (hash ^ c) * 1099511628211ull;
  char name[64];
  std::snprintf(name, sizeof name, "tvsim-app-%016llx", static_cast<unsigned long long>(hash));
  return name;
}

socklen_t Address(const std::string& name, sockaddr_un& address) {
  std::memset(&address, 0, sizeof address);
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path + 1, name.data(), name.size());  // sun_path[0] = 0: abstract
  return static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
}

}  // namespace

SingleInstance::SingleInstance(const std::string& tvId, std::function<void()> onLaunch)
    : m_name(SocketName(tvId)), m_onLaunch(std::move(onLaunch)) {}

SingleInstance::~SingleInstance() { Close(); }

void SingleInstance::Close() {
  if (m_handler != nullptr) ecore_main_fd_handler_del(m_handler);
  m_handler = nullptr;
  if (m_fd >= 0) close(m_fd);
  m_fd = -1;
}

SingleInstance::Role SingleInstance::Claim() {
  sockaddr_un address;
  const socklen_t length = Address(m_name, address);
  // Binding is the atomic step: whoever binds first is the instance. A refused
  // connect means the owner just went away, so try to bind once more.
  for (int attempt = 0; attempt < 2; ++attempt) {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) return Role::kError;
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), length) == 0 && listen(fd, 8) == 0) {
      m_fd = fd;
      return Role::kFirst;
    }
    const int error = errno;
    close(fd);
    if (error != EADDRINUSE) return Role::kError;
    if (Forward()) return Role::kForwarded;
  }
  return Role::kError;
}

bool SingleInstance::Forward() {
  sockaddr_un address;
  const socklen_t length = Address(m_name, address);
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  // The connection itself is the launch request: once connect() returns it waits
  // in the running instance's queue, which may accept and close it at any moment.
  const bool queued = connect(fd, reinterpret_cast<sockaddr*>(&address), length) == 0;
  close(fd);
  return queued;
}

void SingleInstance::Listen() {
  if (m_fd >= 0 && m_handler == nullptr) {
    m_handler = ecore_main_fd_handler_add(m_fd, ECORE_FD_READ, OnReadable, this, nullptr, nullptr);
  }
}

Eina_Bool SingleInstance::OnReadable(void* data, Ecore_Fd_Handler*) {
  auto* self = static_cast<SingleInstance*>(data);
  // Each connection is one launch request (the application ignores its contents,
  // so it has none).
  const int client = accept4(self->m_fd, nullptr, nullptr, SOCK_CLOEXEC);
  if (client < 0) return ECORE_CALLBACK_RENEW;
  close(client);
  if (self->m_onLaunch) self->m_onLaunch();
  return ECORE_CALLBACK_RENEW;
}

}  // namespace tvsim
