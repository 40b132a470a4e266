#include "cgi/staging/PassedFd.h"

#include <sys/socket.h>

#include <cstring>

#include "common/Retry.h"

namespace {

// A message of one byte, with room for one descriptor.
class Parts {
public:
    explicit Parts(char byte) : m_byte(byte), m_data{&m_byte, 1} {
        m_header.msg_iov = &m_data;
        m_header.msg_iovlen = 1;
    }
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;

    msghdr& header() { return m_header; }
    char byte() const { return m_byte; }

    cmsghdr* makeRoomForFd() {
        m_header.msg_control = m_control;
        m_header.msg_controllen = sizeof m_control;
        return CMSG_FIRSTHDR(&m_header);
    }

private:
    char m_byte;
    iovec m_data;
    alignas(cmsghdr) char m_control[CMSG_SPACE(sizeof(int))] = {};
    msghdr m_header = {};
};

} // namespace

bool passed::send(int socket, char byte, int fd) {
    Parts parts(byte);
    if (fd >= 0) {
        cmsghdr* const control = parts.makeRoomForFd();
        control->cmsg_level = SOL_SOCKET;
        control->cmsg_type = SCM_RIGHTS;
        control->cmsg_len = CMSG_LEN(sizeof fd);
        std::memcpy(CMSG_DATA(control), &fd, sizeof fd);
    }
    // A process that has ended gives an error, not a signal.
    return retryInterrupted([&] { return ::sendmsg(socket, &parts.header(), MSG_NOSIGNAL); }) == 1;
}

std::optional<passed::Message> passed::receive(int socket) {
    Parts parts(0);
    parts.makeRoomForFd();
    if (retryInterrupted([&] { return ::recvmsg(socket, &parts.header(), MSG_CMSG_CLOEXEC); }) != 1)
        return std::nullopt;
    Message message;
    message.byte = parts.byte();
    const cmsghdr* const control = CMSG_FIRSTHDR(&parts.header());
    if (control != nullptr && control->cmsg_level == SOL_SOCKET && control->cmsg_type == SCM_RIGHTS) {
        int fd = -1;
        std::memcpy(&fd, CMSG_DATA(control), sizeof fd);
        message.fd = UniqueFd(fd);
    }
    return message;
}
