#include "cgi/staging/TmpKeeper.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "cgi/confine/Reach.h"
#include "cgi/staging/AreaLock.h"
#include "cgi/staging/OwnPlace.h"
#include "cgi/staging/PassedFd.h"
#include "cgi/staging/RemoveTree.h"
#include "cgi/staging/Shell.h"
#include "cgi/staging/SignOfLife.h"
#include "common/CCommUtils.h"
#include "common/Report.h"
#include "common/SignalHandler.h"

namespace {

using Order = TmpKeeper::Order;

constexpr mode_t kArchiveMode = 0600;

// The answer to an order.
constexpr char kDone = 'y';
constexpr char kFailed = 'n';

// What runs in the process.
class Keeper {
public:
    Keeper(const StagingPlaces& places, int channel) : m_places(places), m_channel(channel) {}

    [[noreturn]] void run() {
        leaveResponse();
        outliveTermination();
        reach::confineKeeper(directoryOfPlaces());
        while (const auto message = passed::receive(m_channel)) {
            const auto order = static_cast<Order>(message->byte);
            UniqueFd file;
            const char answer = obey(order, file) ? kDone : kFailed;
            if (!passed::send(m_channel, answer, order == Order::OpenLock ? m_lock.get() : file.get()))
                break;
            if (order == Order::CleanUp) {
                cleanUp();
                break;
            }
        }
        ::_exit(0);
    }

private:
    // The response ends when no process has its descriptor open any more.
    static void leaveResponse() {
        const UniqueFd null(::open("/dev/null", O_WRONLY | O_CLOEXEC));
        if (!null || ::dup2(null.get(), STDOUT_FILENO) < 0)
            ::close(STDOUT_FILENO);
    }

    // A server may send a signal to all processes of a request that still has to clean up.
    static void outliveTermination() {
        for (const int signalNumber : {SIGTERM, SIGINT, SIGHUP})
            setSignalHandler(signalNumber, [](int /*signalNumber*/) {});
    }

    std::string directoryOfPlaces() const { return CCommUtils::absFilePath(m_places.archive); }

    bool obey(Order order, UniqueFd& file) {
        switch (order) {
        case Order::OpenLock:
            m_lock = AreaLock::openFile(m_places.lock);
            return static_cast<bool>(m_lock);
        case Order::ClaimDirectory:
            return claimDirectory(m_places.directory);
        case Order::RemoveArchive:
            return removeTree(m_places.archive);
        case Order::CreateArchive:
            file = createOwnFile(m_places.archive, kArchiveMode);
            return static_cast<bool>(file);
        case Order::PublishArchive:
            return moveOver(m_places.newArchive, m_places.archive);
        case Order::CreateTaskList:
            file = createOwnFile(m_places.newTaskList, m_places.taskListMode);
            return static_cast<bool>(file);
        case Order::PublishTaskList:
            return moveOver(m_places.newTaskList, m_places.taskList);
        case Order::DropTaskList:
            return ::unlink(m_places.newTaskList.c_str()) == 0;
        case Order::CleanUp:
            return true; // after the answer
        }
        return false;
    }

    // As subreaper the process is the parent of the command's processes even when the shell leaves them in
    // the background.
    void cleanUp() const {
        ::prctl(PR_SET_CHILD_SUBREAPER, 1);
        const SignOfLife signOfLife(m_lock.get());
        const std::string command = "rm -rf " + m_places.archive + " " + m_places.directory + "/* &";
        shell::run(command, m_lock.get(), {{}, {}, directoryOfPlaces()});
        while (::wait(nullptr) > 0 || errno == EINTR) {
        }
    }

    const StagingPlaces& m_places;
    int m_channel;
    UniqueFd m_lock;
};

std::optional<passed::Message> giveAndWait(const UniqueFd& channel, Order order) {
    std::optional<passed::Message> answer;
    if (channel && passed::send(channel.get(), static_cast<char>(order)))
        answer = passed::receive(channel.get());
    if (channel && !answer)
        report("deliver", "the request", "the process that keeps its places has ended");
    return answer;
}

} // namespace

TmpKeeper::TmpKeeper(const StagingPlaces& places) {
    std::array<int, 2> ends = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        reportErrno("keep places of", places.directory, errno);
        return;
    }
    UniqueFd mine(ends[0]);
    const UniqueFd theirs(ends[1]);
    const pid_t child = ::fork();
    if (child == 0) {
        mine.reset();
        Keeper(places, theirs.get()).run();
    }
    if (child < 0)
        reportErrno("keep places of", places.directory, errno);
    else
        m_channel = std::move(mine);
}

bool TmpKeeper::give(Order order) const {
    const auto answer = giveAndWait(m_channel, order);
    return answer && answer->byte == kDone;
}

UniqueFd TmpKeeper::open(Order order) const {
    auto answer = giveAndWait(m_channel, order);
    return answer ? std::move(answer->fd) : UniqueFd();
}
