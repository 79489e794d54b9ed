#pragma once

// An X display that nobody serves: a listening socket under the abstract name libxcb tries first
// for ":N" (Linux), which counts every connection made to it and closes it at once, so that a
// client that does try to talk X fails fast instead of waiting for the server's greeting. A
// test sets DISPLAY to it, as a Wayland session that also runs XWayland does, and then proves
// that code which must not open an X connection on that platform opened none.

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QByteArray>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <thread>

class X11DisplayTrap {
 public:
  X11DisplayTrap() {
    // Display numbers far above what a desktop or xvfb-run -a hands out; the first free one.
    for (int number = 370; number < 470 && listen_fd_ < 0; ++number) {
      const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
      if (fd < 0) return;
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      const QByteArray name = "/tmp/.X11-unix/X" + QByteArray::number(number);
      std::memcpy(address.sun_path + 1, name.constData(), static_cast<size_t>(name.size()));
      const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
      if (::bind(fd, reinterpret_cast<sockaddr*>(&address), length) == 0 && ::listen(fd, 8) == 0) {
        listen_fd_ = fd;
        display_ = ":" + QByteArray::number(number);
      } else {
        ::close(fd);
      }
    }
    if (listen_fd_ < 0 || ::pipe2(stop_pipe_, O_CLOEXEC) != 0) return;
    acceptor_ = std::thread([this] { AcceptUntilStopped(); });
  }

  ~X11DisplayTrap() {
    if (acceptor_.joinable()) {
      const char stop = 0;
      (void)!::write(stop_pipe_[1], &stop, 1);
      acceptor_.join();
    }
    for (int fd : {listen_fd_, stop_pipe_[0], stop_pipe_[1]}) {
      if (fd >= 0) ::close(fd);
    }
  }

  X11DisplayTrap(const X11DisplayTrap&) = delete;
  X11DisplayTrap& operator=(const X11DisplayTrap&) = delete;

  /// ":N", or empty when no socket could be made.
  QByteArray display() const { return display_; }
  /// Connections made to the display so far.
  int connections() const { return connections_.load(); }

 private:
  void AcceptUntilStopped() {
    pollfd fds[2] = {{listen_fd_, POLLIN, 0}, {stop_pipe_[0], POLLIN, 0}};
    while (::poll(fds, 2, -1) >= 0 && !(fds[1].revents & POLLIN)) {
      if (fds[0].revents & POLLIN) {
        const int client = ::accept4(listen_fd_, nullptr, nullptr, SOCK_CLOEXEC);
        if (client >= 0) {
          ++connections_;
          ::close(client);
        }
      }
    }
  }

  int listen_fd_ = -1;
  int stop_pipe_[2] = {-1, -1};
  QByteArray display_;
  std::atomic<int> connections_{0};
  std::thread acceptor_;
};

// The trap of the running suite, made by QTU_TEST_MAIN_WITH_X11_TRAP.
inline X11DisplayTrap*& CurrentX11DisplayTrap() {
  static X11DisplayTrap* trap = nullptr;
  return trap;
}

// main() of a QtTest suite whose process has DISPLAY set to a trap from its start, as in a
// session that also offers an X display; the suite asks CurrentX11DisplayTrap() for it.
#define QTU_TEST_MAIN_WITH_X11_TRAP(TestObject) \
  int main(int argc, char** argv) {             \
    X11DisplayTrap trap;                        \
    qputenv("DISPLAY", trap.display());         \
    CurrentX11DisplayTrap() = &trap;            \
    QApplication app(argc, argv);               \
    TestObject test;                            \
    QTEST_SET_MAIN_SOURCE_PATH                  \
    return QTest::qExec(&test, argc, argv);     \
  }
