#include "support/loopback_server.h"

#include "product_family.h"

#include <stdexcept>
#include <utility>
#include <ws2tcpip.h>

namespace {

constexpr unsigned short Port = 18444;

bool IsWhole(const std::string& request)
{
    const std::size_t end = request.find("\r\n\r\n");
    const std::size_t length = request.find("Content-Length: ");
    return end != request.npos &&
           request.size() >= end + 4 + (length < end ? std::stoul(request.substr(length + 16)) : 0);
}

std::string ReceiveRequest(SOCKET connection)
{
    std::string request;
    char block[4096];
    while (!IsWhole(request)) {
        const int count = recv(connection, block, sizeof block, 0);
        if (count <= 0) {
            return {};
        }
        request.append(block, static_cast<std::size_t>(count));
    }
    return request;
}

void Close(SOCKET connection, bool resets)
{
    if (resets) {
        const linger atOnce{1, 0};
        setsockopt(connection, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&atOnce), sizeof atOnce);
    } else {
        shutdown(connection, SD_SEND);
        char rest[256];
        while (recv(connection, rest, sizeof rest, 0) > 0) {
        }
    }
    closesocket(connection);
}

} // namespace

Reply Reply::Http(const std::string& body, const std::string& statusLine)
{
    return {
        {"HTTP/1.1 " + statusLine +
         "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body}};
}

LoopbackServer::LoopbackServer()
{
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    m_replies["/check.php"] = Reply::Http("1");

    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = inet_addr(TESTS_ADDRESS);
    address.sin_port = htons(Port);
    m_listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    const BOOL reuse = TRUE;
    setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&reuse), sizeof reuse);
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(m_listener, 16) != 0) {
        throw std::runtime_error("port 18444 is in use on " TESTS_ADDRESS);
    }
    m_thread = std::thread([this] { Run(); });
}

LoopbackServer::~LoopbackServer()
{
    Stop();
    WSACleanup();
}

void LoopbackServer::Stop()
{
    m_isStopping = true;
    if (m_thread.joinable()) {
        m_thread.join();
        closesocket(m_listener);
    }
}

void LoopbackServer::Answer(const std::string& path, Reply reply)
{
    const std::lock_guard lock(m_mutex);
    m_replies[path] = std::move(reply);
}

std::vector<std::string> LoopbackServer::TakeRequests()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_requests, {});
}

void LoopbackServer::Run()
{
    while (!m_isStopping) {
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(m_listener, &readable);
        timeval poll{0, 20'000};
        if (select(0, &readable, nullptr, nullptr, &poll) > 0) {
            Serve(accept(m_listener, nullptr, nullptr));
        }
    }
}

void LoopbackServer::Serve(SOCKET connection)
{
    if (const std::lock_guard lock(m_mutex); m_replies["/get_updates.php"].ignoresRequest) {
        Close(connection, true);
        return;
    }
    const std::string request = ReceiveRequest(connection);
    Reply reply;
    if (const std::size_t start = request.find(' '); start != request.npos) {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
        reply = m_replies[request.substr(start + 1, request.find(' ', start + 1) - start - 1)];
    }
    for (const std::string& piece : reply.pieces) {
        send(connection, piece.data(), static_cast<int>(piece.size()), 0);
        std::this_thread::sleep_for(reply.pauseBetweenPieces);
    }
    Close(connection, reply.resets);
}
