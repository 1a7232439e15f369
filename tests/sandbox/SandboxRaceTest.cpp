#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <utility>

#include "minihost/host/Context.h"
#include "minihost/host/SandboxPolicy.h"
#include "object/AutoRefPtr.h"
#include "testing/TestFiles.h"

namespace minihost {
namespace {

namespace fs = std::filesystem;
using tavrel_testing::OpenDescriptors;
using tavrel_testing::TempDir;

#if defined(_WIN32)

// Swaps the two names a and b: true when done.
// NOTE: Windows cannot exchange two names at once; three renames do it, and in between a
// load meets no d at all, which it refuses like any missing file.
bool Exchange(std::string const& a, std::string const& b) {
    std::wstring const first = fs::path(a).wstring();
    std::wstring const second = fs::path(b).wstring();
    std::wstring const aside = first + L".swap";
    if (!::MoveFileExW(first.c_str(), aside.c_str(), 0)) {
        return false;
    }
    bool const swapped = ::MoveFileExW(second.c_str(), first.c_str(), 0) &&
                         ::MoveFileExW(aside.c_str(), second.c_str(), 0);
    if (!swapped) {
        ::MoveFileExW(aside.c_str(), first.c_str(), 0);
    }
    return swapped;
}

// Why the names cannot be swapped: the system's error code.
std::string WhyNoExchange() { return "error " + std::to_string(::GetLastError()); }

#else

// Swaps the two names a and b atomically (RENAME_EXCHANGE): true when done.
bool Exchange(std::string const& a, std::string const& b) {
    return ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
}

std::string WhyNoExchange() { return std::strerror(errno); }

#endif

// A thread that swaps a and b over and over until the object goes.
class Swapper {
public:
    Swapper(std::string a, std::string b)
        : mA(std::move(a)), mB(std::move(b)), mThread([this] { Run(); }) {}
    ~Swapper() { Stop(); }
    Swapper(Swapper const&) = delete;
    Swapper& operator=(Swapper const&) = delete;

    // Stops the thread and gives how many swaps it made.
    long Stop() {
        mStop.store(true);
        if (mThread.joinable()) {
            mThread.join();
        }
        return mSwaps.load();
    }

private:
    void Run() {
        while (!mStop.load()) {
            if (Exchange(mA, mB)) {
                mSwaps.fetch_add(1);
            }
        }
    }

    std::string mA, mB;
    std::atomic<bool> mStop{false};
    std::atomic<long> mSwaps{0};
    std::thread mThread;
};

// All the bytes of data.
std::string Bytes(Tavrel::IDataRef const& data) {
    std::string bytes(data.GetSize(), '\0');
    bytes.resize(data.Read(bytes.data(), bytes.size(), 0));
    return bytes;
}

// The sandbox must read the file it checked. One thread swaps the real directory allowed/d
// (holding f, "inside") with allowed/link, a link to outside (holding f, "SECRET"), while
// loads of "d/f" run: a load that checks the path and then opens it again by name would at
// times open outside/f.
TEST(SandboxPolicy, NeverServesTheOutsideWhileADirectoryIsSwappedForALink) {
    TempDir tree;
    fs::create_directories(tree.Path("allowed/d"));
    fs::create_directories(tree.Path("outside"));
    tree.Write("allowed/d/f", "inside");
    tree.Write("outside/f", "SECRET");
    if (!tavrel_testing::MakeSymbolicLink("../outside", tree.Path("allowed/link"), true)) {
        GTEST_SKIP() << "this system made no symbolic link (on Windows that needs developer mode "
                        "or the right to make links; wine makes none)";
    }
    std::string const d = tree.Path("allowed/d");
    std::string const link = tree.Path("allowed/link");
    if (!Exchange(d, link)) {
#if !defined(_WIN32)
        ASSERT_TRUE(errno == EINVAL || errno == ENOSYS) << std::strerror(errno);
#endif
        GTEST_SKIP() << "the file system cannot exchange two names: " << WhyNoExchange();
    }
    ASSERT_TRUE(Exchange(d, link)) << WhyNoExchange();

    SandboxPolicy policy(tree.Path("allowed"), {tree.Path("allowed")}, false);
    Context context{Tavrel::AutoRefPtr<Tavrel::IPolicy>()};
    long const descriptors = OpenDescriptors();
    long served = 0;
    long refused = 0;
    long leaked = 0;
    long swaps = 0;
    {
        Swapper swapper(d, link);
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        for (int load = 0; load < 100000 && std::chrono::steady_clock::now() < deadline; ++load) {
            Tavrel::AutoRefPtr<Tavrel::IDataRef> data(policy.Interface_LoadData(&context, "d/f"));
            if (!data) {
                ++refused;
            } else if (Bytes(*data.get()) == "inside") {
                ++served;
            } else {
                ++leaked;
            }
        }
        swaps = swapper.Stop();
    }
    RecordProperty("served", std::to_string(served));
    RecordProperty("refused", std::to_string(refused));
    RecordProperty("swaps", std::to_string(swaps));
    EXPECT_EQ(leaked, 0) << "loads that read outside/f (" << served << " served inside)";
    // The race really ran: the loads met both the directory and the link.
    EXPECT_GT(served, 0);
    EXPECT_GT(refused, 0);
    EXPECT_GT(swaps, 0);
    EXPECT_EQ(OpenDescriptors(), descriptors) << "every refused file is closed";
}

}  // namespace
}  // namespace minihost
