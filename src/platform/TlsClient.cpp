#include "platform/TlsClient.h"

#include "platform/TcpSocket.h"

#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace platform {

TlsClient::TlsClient(std::string serverName)
    : fServerName(std::move(serverName))
    , fContext(SSL_CTX_new(TLS_client_method()))
{
    if (fContext == nullptr)
        return;
    SSL_CTX_set_min_proto_version(fContext, TLS1_2_VERSION);
    // Verified, but never refused during the handshake: the caller shows an
    // unverified certificate to the user, who may know it.
    SSL_CTX_set_verify(fContext, SSL_VERIFY_NONE, nullptr);
    SSL_CTX_set_default_verify_paths(fContext);
    SSL_CTX_set_app_data(fContext, this);
    // Sessions are kept here, not in OpenSSL's cache: only the first
    // connection's count.
    SSL_CTX_set_session_cache_mode(fContext,
                                   SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL_STORE);
    SSL_CTX_sess_set_new_cb(fContext, &TlsClient::KeepSession);
}

TlsClient::~TlsClient()
{
    if (fContext == nullptr)
        return;
    // Connections may outlive the client: they keep the context alive, and
    // find no client in it to hand their sessions to.
    SSL_CTX_set_app_data(fContext, nullptr);
    SSL_CTX_free(fContext);
    for (SSL_SESSION *session : fSessions)
        SSL_SESSION_free(session);
}

int TlsClient::KeepSession(SSL *connection, SSL_SESSION *session)
{
    auto *client = static_cast<TlsClient *>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(connection)));
    if (client == nullptr)
        return 0;
    // A handful is plenty: each connection brings new ones.
    constexpr size_t kKept = 8;
    client->fSessions.push_front(session);
    if (client->fSessions.size() > kKept) {
        SSL_SESSION_free(client->fSessions.back());
        client->fSessions.pop_back();
    }
    // 1: the reference OpenSSL handed over is ours now.
    return 1;
}

SSL *TlsClient::NewConnection()
{
    if (fContext == nullptr)
        return nullptr;
    SSL *connection = SSL_new(fContext);
    if (connection == nullptr)
        return nullptr;
    uint32_t address = 0;
    if (SocketAddress::FromDotted(fServerName, &address)) {
        X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(connection), fServerName.c_str());
    } else {
        SSL_set1_host(connection, fServerName.c_str());
        // The name for servers that hold certificates for several.
        SSL_set_tlsext_host_name(connection, fServerName.c_str());
    }
    if (!fFirstMade) {
        fFirstMade = true;
    } else if (!fSessions.empty()) {
        SSL_SESSION *session = fSessions.front();
        SSL_set_session(connection, session);
        fSessions.pop_front();
        fSessions.push_back(session);
    }
    return connection;
}

bool TlsClient::Resumed(const SSL *connection)
{
    return SSL_session_reused(const_cast<SSL *>(connection)) == 1;
}

} // namespace platform
