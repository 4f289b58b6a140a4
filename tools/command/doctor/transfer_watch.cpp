#include "doctor/transfer_watch.h"

#include "calls/text_copy.h"
#include "certificate/server_certificate.h"
#include "doctor/work_thread.h"
#include "host/current_call.h"
#include "host/host_environment.h"
#include "service/service_client.h"
#include "url/service_endpoint.h"

#include <atomic>
#include <exception>
#include <future>
#include <memory>
#include <string_view>
#include <vector>

namespace product_services_tool {
namespace {

using product_services_guard::FromUtf8;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds PollInterval{20};

// Windows may fetch an issuer's certificate.
constexpr long VerificationTimeoutMs = 5000;

// Polled until the socket is connected, because the result of select is meaningless before.
bool IsConnected(curl_socket_t socket)
{
    sockaddr_storage peer;
    int size = sizeof peer;
    return getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &size) == 0;
}

// Returns 1 if there is data, 0 if none came within a second, and SOCKET_ERROR if the socket is closed. The
// timeout is long, because libcurl could read what arrives between two calls.
int WaitForData(curl_socket_t socket)
{
    fd_set sockets;
    FD_ZERO(&sockets);
    FD_SET(socket, &sockets);
    timeval timeout{1, 0};
    return select(0, &sockets, nullptr, nullptr, &timeout);
}

// Shared with threads that may outlive WatchTransfer. Only the thread of the transfer uses the report until
// the transfer has ended.
class WatchingEnvironment final : public product_services::HostEnvironment,
                                  public std::enable_shared_from_this<WatchingEnvironment>
{
public:
    explicit WatchingEnvironment(const TransferSettings& settings) : m_settings(settings) {}

    void ShowWaitCursor() override {}
    void PrepareTransfer(CURL* handle) override;
    void OnTransferDone(CURL* handle, CURLcode result, const std::string& reply) override;

    void Run(const std::function<void()>& transfer);
    void JoinSocketThreads() const;
    bool IsNameKnown() const { return m_socketStep != TransferStep::Name; }
    const TransferReport& Report() const { return m_report; }

private:
    void WatchConnection();
    void WatchProgress();
    void WatchReply();
    void Advance(TransferStep step);
    void ReadTimes();
    void DescribeCertificate();
    void WatchSocket(curl_socket_t socket);

    // libcurl's callbacks, through which no exception may pass.
    void OnSocket(curl_socket_t socket) noexcept;
    int OnProgress() noexcept;
    int OnConnected() noexcept;

    const TransferSettings m_settings;
    TransferReport m_report;
    CURL* m_handle = nullptr;
    char m_errorBuffer[CURL_ERROR_SIZE] = {};
    steady_clock::time_point m_stepStart = steady_clock::now();
    /// The step that the socket has reached. libcurl reports it only after the TLS handshake.
    std::atomic<TransferStep> m_socketStep = TransferStep::Name;
    /// Ends the threads that watch a socket.
    std::atomic<bool> m_isDone = false;
    std::vector<ThreadHandle> m_socketThreads;
};

WatchingEnvironment& ToEnvironment(void* pointer)
{
    return *static_cast<WatchingEnvironment*>(pointer);
}

void WatchingEnvironment::PrepareTransfer(CURL* handle)
{
    m_handle = handle;
    if (!m_settings.proxy.empty()) {
        curl_easy_setopt(handle, CURLOPT_PROXY, m_settings.proxy.c_str());
    }
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, m_errorBuffer);
    curl_easy_setopt(handle, CURLOPT_CERTINFO, 1L);
    // As in a guarded call: OnConnected verifies the host name.
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 0L);
    WatchConnection();
    WatchProgress();
    WatchReply();
}

void WatchingEnvironment::WatchConnection()
{
    const auto onDebug = [](CURL*, curl_infotype type, char* data, std::size_t size,
                            void* self) noexcept -> int {
        if (type == CURLINFO_TEXT) {
            ToEnvironment(self).m_report.lines.push_back(FromUtf8({data, size - 1})); // without its end
        }
        return 0;
    };
    const auto onSocket = [](void* self, curl_socket_t socket, curlsocktype) noexcept -> int {
        ToEnvironment(self).OnSocket(socket);
        return CURL_SOCKOPT_OK;
    };
    curl_easy_setopt(m_handle, CURLOPT_VERBOSE, 1L);
    curl_easy_setopt(m_handle, CURLOPT_DEBUGFUNCTION, +onDebug);
    curl_easy_setopt(m_handle, CURLOPT_DEBUGDATA, this);
    curl_easy_setopt(m_handle, CURLOPT_SOCKOPTFUNCTION, +onSocket);
    curl_easy_setopt(m_handle, CURLOPT_SOCKOPTDATA, this);
}

void WatchingEnvironment::WatchProgress()
{
    const auto onProgress = [](void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) noexcept -> int {
        return ToEnvironment(self).OnProgress();
    };
    const auto onConnected = [](void* self, char*, char*, int, int) noexcept -> int {
        return ToEnvironment(self).OnConnected();
    };
    curl_easy_setopt(m_handle, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(m_handle, CURLOPT_XFERINFOFUNCTION, +onProgress);
    curl_easy_setopt(m_handle, CURLOPT_XFERINFODATA, this);
    curl_easy_setopt(m_handle, CURLOPT_PREREQFUNCTION, +onConnected);
    curl_easy_setopt(m_handle, CURLOPT_PREREQDATA, this);
}

void WatchingEnvironment::WatchReply()
{
    const auto onPiece = [](const char* data, std::size_t size, std::size_t count,
                            void* self) noexcept -> std::size_t {
        ++ToEnvironment(self).m_report.pieceCount;
        return product_services::ServiceClient::ReceiveReplyChunk(data, size, count, nullptr);
    };
    curl_easy_setopt(m_handle, CURLOPT_WRITEFUNCTION, +onPiece);
    curl_easy_setopt(m_handle, CURLOPT_WRITEDATA, this);
}

void WatchingEnvironment::OnTransferDone(CURL* handle, CURLcode result, const std::string& reply)
{
    m_isDone = true;
    ReadTimes();
    const char* redirectUrl = nullptr;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &m_report.httpStatus);
    curl_easy_getinfo(handle, CURLINFO_REDIRECT_URL, &redirectUrl);
    m_report.redirectUrl = FromUtf8(redirectUrl ? redirectUrl : "");
    m_report.result = result;
    m_report.error = FromUtf8(m_errorBuffer[0] ? m_errorBuffer : curl_easy_strerror(result));
    m_report.reply = reply;
}

void WatchingEnvironment::Run(const std::function<void()>& transfer)
{
    product_services::CurrentEnvironment = this;
    try {
        transfer();
    } catch (const std::exception& exception) {
        // An exception after the transfer is about the reply, which is checked separately.
        if (m_report.error.empty()) {
            m_report.error = L"a key or the version cannot be sent: " + FromUtf8(exception.what());
        }
    }
    product_services::CurrentEnvironment = &product_services::DefaultEnvironment;
}

void WatchingEnvironment::JoinSocketThreads() const
{
    for (const ThreadHandle& thread : m_socketThreads) {
        JoinThread(thread);
    }
}

// Ignores steps after the timeout: the transfer then closes its socket, which looks as if it had data.
void WatchingEnvironment::Advance(TransferStep step)
{
    if (step > m_report.step && !m_report.isTimedOut) {
        m_report.step = step;
        m_stepStart = steady_clock::now();
    }
}

void WatchingEnvironment::ReadTimes()
{
    curl_easy_getinfo(m_handle, CURLINFO_NAMELOOKUP_TIME_T, &m_report.nameTime);
    curl_easy_getinfo(m_handle, CURLINFO_CONNECT_TIME_T, &m_report.connectTime);
    curl_easy_getinfo(m_handle, CURLINFO_APPCONNECT_TIME_T, &m_report.tlsTime);
    curl_easy_getinfo(m_handle, CURLINFO_STARTTRANSFER_TIME_T, &m_report.replyTime);
    Advance(m_socketStep);
    if (m_report.step == TransferStep::ReplyStart && m_report.replyTime > 0) {
        Advance(TransferStep::ReplyEnd);
    }
}

// "Subject:CN=localhost, Issuer:CN=localhost, Expire Date:2027-11-26 03:30:00 GMT"
void WatchingEnvironment::DescribeCertificate()
{
    const curl_certinfo* info = nullptr;
    curl_easy_getinfo(m_handle, CURLINFO_CERTINFO, &info);
    if (!info || info->num_of_certs < 1) {
        return;
    }
    for (const curl_slist* line = info->certinfo[0]; line; line = line->next) {
        const std::string_view text = line->data;
        if (text.starts_with("Subject:") || text.starts_with("Issuer:") || text.starts_with("Expire ")) {
            m_report.certificate += (m_report.certificate.empty() ? L"" : L", ") + FromUtf8(text);
        }
    }
}

void WatchingEnvironment::WatchSocket(curl_socket_t socket)
{
    while (!m_isDone && !IsConnected(socket)) {
        Sleep(1);
    }
    if (m_isDone) {
        return;
    }
    m_socketStep = TransferStep::TlsAnswer;
    int dataCount = 0;
    while (!m_isDone && dataCount == 0) {
        dataCount = WaitForData(socket);
    }
    // The data remains for libcurl to read.
    if (dataCount == 1) {
        m_socketStep = TransferStep::TlsHandshake;
    }
}

void WatchingEnvironment::OnSocket(curl_socket_t socket) noexcept
{
    m_socketStep = TransferStep::Connection;
    m_socketThreads.push_back(
        StartThread([self = shared_from_this(), socket] { self->WatchSocket(socket); }));
}

// libcurl calls this several times a second. Any value but 0 ends the transfer.
int WatchingEnvironment::OnProgress() noexcept
{
    ReadTimes();
    m_report.isTimedOut = steady_clock::now() - m_stepStart > m_settings.stepTimeout;
    return m_report.isTimedOut ? 1 : 0;
}

int WatchingEnvironment::OnConnected() noexcept
{
    ReadTimes();
    DescribeCertificate();
    m_report.certificateError = product_services_guard::VerifyServerCertificate(
        m_handle, product_services_guard::GetServiceEndpoint().host, VerificationTimeoutMs);
    Advance(TransferStep::ReplyStart);
    const bool isRefused = m_settings.requiresCertificate && !m_report.certificateError.empty();
    return isRefused ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
}

} // namespace

TransferReport WatchTransfer(const TransferSettings& settings, std::function<void()> transfer)
{
    const auto environment = std::make_shared<WatchingEnvironment>(settings);
    std::packaged_task<void()> task([environment, run = std::move(transfer)] { environment->Run(run); });
    const std::future<void> end = task.get_future();
    const ThreadHandle thread = StartThread(std::move(task));
    const auto nameDeadline = steady_clock::now() + settings.stepTimeout;
    while (end.wait_for(PollInterval) != std::future_status::ready) {
        if (!environment->IsNameKnown() && steady_clock::now() > nameDeadline) {
            return {.isTimedOut = true};
        }
    }
    JoinThread(thread);
    environment->JoinSocketThreads();
    return environment->Report();
}

} // namespace product_services_tool
