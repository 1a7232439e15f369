// LiveToken: a member that counts the host buffers alive in this process, so tests can
// check that every buffer was destroyed exactly once. Constructing a token adds one to a
// process-wide atomic count; destroying it subtracts one. It says nothing about which
// objects are alive, and does not count the module's own Data buffers.
#pragma once

namespace minihost {

class LiveToken {
public:
    LiveToken() noexcept;
    LiveToken(LiveToken const&) = delete;
    LiveToken& operator=(LiveToken const&) = delete;
    ~LiveToken();

    // How many tokens exist now. No buffer alive => 0.
    static long Count() noexcept;
};

}  // namespace minihost
