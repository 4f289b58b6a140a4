// A product service in the process of the test: plain HTTP on the address of the tests' product family.
#pragma once

#include <winsock2.h>

#include <ws2tcpip.h>

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <regex>
#include <thread>
#include <utility>

inline const std::string Offer = R"([{"name":"X","version":"2","url":"u"}])";

/// A complete HTTP response.
inline std::string HttpReply(const std::string& body, const std::string& status = "200 OK")
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

class LoopbackServer
{
public:
    LoopbackServer()
    {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
        m_listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        const BOOL reuse = TRUE;
        setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&reuse), sizeof reuse);
        sockaddr_in address{AF_INET, htons(18444), {}, {}};
        EXPECT_EQ(inet_pton(AF_INET, TESTS_ADDRESS, &address.sin_addr), 1);
        EXPECT_EQ(bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        listen(m_listener, 16);
        m_thread = std::thread([this] {
            SOCKET client = accept(m_listener, nullptr, nullptr);
            while (client != INVALID_SOCKET) {
                Serve(client);
                client = accept(m_listener, nullptr, nullptr);
            }
        });
    }
    ~LoopbackServer() { Stop(); }

    /// Refuses connections from now on.
    void Stop()
    {
        m_hangs = false;
        closesocket(std::exchange(m_listener, INVALID_SOCKET));
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    // Not locked, because requests arrive only while a call of the library is in progress.
    void AnswerProbe(const std::string& body) { m_probe = HttpReply(body); }
    void Answer(const std::string& body) { Send(HttpReply(body)); }
    void Send(const std::string& reply)
    {
        m_hangs = false;
        m_updates = reply;
    }

    /// Sends only the beginning of a reply to an update query. Then the connection stays open until the
    /// client closes it or another reply is set.
    void Hang(const std::string& beginning = {})
    {
        m_updates = beginning;
        m_hangs = true;
    }

    /// Whether a client is waiting for the rest of such a reply.
    bool IsHanging() const { return m_isHanging; }

    /// Sets what happens when a probe has arrived, before it is answered.
    void OnProbe(std::function<void()> action) { m_onProbe = std::move(action); }

    /// The requests since the last call of this, joined.
    std::string TakeRequests() { return std::exchange(m_requests, {}); }

private:
    static void SetReceiveTimeout(SOCKET client, DWORD timeoutMs)
    {
        setsockopt(
            client, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&timeoutMs), sizeof timeoutMs);
    }

    // Returns what has arrived when the request is complete, or the client has closed the connection.
    static std::string ReceiveRequest(SOCKET client)
    {
        SetReceiveTimeout(client, 5000);
        std::string request;
        char block[4096];
        // The body of a query ends with the field "up"; a probe has no body.
        const std::regex end("&up=|Length: 0");
        while (!std::regex_search(request, end)) {
            const int count = recv(client, block, sizeof block, 0);
            if (count <= 0) {
                EXPECT_TRUE(count == 0 || WSAGetLastError() != WSAETIMEDOUT)
                    << "the server waited in vain for the end of the request \"" << request << '"';
                break;
            }
            request.append(block, static_cast<std::size_t>(count));
        }
        return request;
    }

    void Serve(SOCKET client)
    {
        const std::string request = ReceiveRequest(client);
        m_requests += request;
        const bool isProbe = request.find("/check.php") != request.npos;
        if (isProbe) {
            m_onProbe();
        }
        const std::string& reply = isProbe ? m_probe : m_updates;
        send(client, reply.data(), static_cast<int>(reply.size()), 0);
        if (!isProbe && m_hangs) {
            WaitForEnd(client);
        }
        closesocket(client);
    }

    void WaitForEnd(SOCKET client)
    {
        SetReceiveTimeout(client, 20);
        m_isHanging = true;
        char byte = 0;
        while (m_hangs && recv(client, &byte, 1, 0) < 0 && WSAGetLastError() == WSAETIMEDOUT) {
        }
        m_isHanging = false;
    }

    std::string m_probe = HttpReply("1");
    std::string m_updates = HttpReply(Offer);
    std::atomic<bool> m_hangs = false;
    std::atomic<bool> m_isHanging = false;
    std::function<void()> m_onProbe = [] {};
    std::string m_requests;
    SOCKET m_listener;
    std::thread m_thread;
};
