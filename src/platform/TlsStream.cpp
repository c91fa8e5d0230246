#include "platform/TlsStream.h"

#include "platform/TlsClient.h"

#include <cerrno>
#include <cstdint>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <sys/socket.h>

namespace platform {

namespace {

int SocketOf(BIO *bio)
{
    return int(reinterpret_cast<intptr_t>(BIO_get_data(bio)));
}

// The socket's time-outs end a blocking call with EAGAIN: OpenSSL is told to
// try again, and its caller reads that as the time-out it is.
int BioResult(BIO *bio, ssize_t result, bool reading)
{
    BIO_clear_retry_flags(bio);
    if (result < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        if (reading)
            BIO_set_retry_read(bio);
        else
            BIO_set_retry_write(bio);
    }
    return int(result);
}

int BioRead(BIO *bio, char *buffer, int size)
{
    ssize_t received;
    do {
        received = recv(SocketOf(bio), buffer, size_t(size), 0);
    } while (received < 0 && errno == EINTR);
    return BioResult(bio, received, true);
}

// send with MSG_NOSIGNAL: OpenSSL's own socket BIO writes with write(), which
// raises SIGPIPE on a connection the server has closed.
int BioWrite(BIO *bio, const char *data, int size)
{
    ssize_t sent;
    do {
        sent = send(SocketOf(bio), data, size_t(size), MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return BioResult(bio, sent, false);
}

long BioControl(BIO *, int command, long, void *)
{
    return command == BIO_CTRL_FLUSH ? 1 : 0;
}

int BioCreate(BIO *bio)
{
    BIO_set_init(bio, 1);
    return 1;
}

int BioDestroy(BIO *)
{
    return 1;
}

// Made once, for the life of the process, as OpenSSL's own methods are.
BIO_METHOD *SocketMethod()
{
    static BIO_METHOD *const method = [] {
        BIO_METHOD *made = BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK,
                                        "kestrin socket");
        BIO_meth_set_read(made, &BioRead);
        BIO_meth_set_write(made, &BioWrite);
        BIO_meth_set_ctrl(made, &BioControl);
        BIO_meth_set_create(made, &BioCreate);
        BIO_meth_set_destroy(made, &BioDestroy);
        return made;
    }();
    return method;
}

std::string LastErrorText()
{
    const unsigned long error = ERR_get_error();
    ERR_clear_error();
    if (error == 0)
        return "the server ended the connection";
    const char *reason = ERR_reason_error_string(error);
    return reason != nullptr ? reason : "TLS failed";
}

std::string NameText(const X509_NAME *name)
{
    BIO *text = BIO_new(BIO_s_mem());
    X509_NAME_print_ex(text, name, 0, XN_FLAG_RFC2253 & ~ASN1_STRFLGS_ESC_MSB);
    char *data = nullptr;
    const long length = BIO_get_mem_data(text, &data);
    std::string result(data, size_t(length));
    BIO_free(text);
    return result;
}

std::string TimeText(const ASN1_TIME *time)
{
    BIO *text = BIO_new(BIO_s_mem());
    ASN1_TIME_print(text, time);
    char *data = nullptr;
    const long length = BIO_get_mem_data(text, &data);
    std::string result(data, size_t(length));
    BIO_free(text);
    return result;
}

std::string AlternativeNames(X509 *certificate)
{
    std::string names;
    auto *general = static_cast<GENERAL_NAMES *>(
        X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr));
    for (int i = 0; i < sk_GENERAL_NAME_num(general); i++) {
        const GENERAL_NAME *name = sk_GENERAL_NAME_value(general, i);
        std::string text;
        if (name->type == GEN_DNS) {
            const ASN1_STRING *dns = name->d.dNSName;
            text.assign(reinterpret_cast<const char *>(ASN1_STRING_get0_data(dns)),
                        size_t(ASN1_STRING_length(dns)));
        } else if (name->type == GEN_IPADD && ASN1_STRING_length(name->d.iPAddress) == 4) {
            const unsigned char *bytes = ASN1_STRING_get0_data(name->d.iPAddress);
            text = std::to_string(bytes[0]) + "." + std::to_string(bytes[1]) + "."
                   + std::to_string(bytes[2]) + "." + std::to_string(bytes[3]);
        }
        if (!text.empty())
            names += (names.empty() ? "" : ", ") + text;
    }
    GENERAL_NAMES_free(general);
    return names;
}

std::string Fingerprint(const X509 *certificate)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (X509_digest(certificate, EVP_sha256(), digest, &length) != 1)
        return {};
    static const char hex[] = "0123456789ABCDEF";
    std::string text;
    for (unsigned int i = 0; i < length; i++) {
        if (i > 0)
            text += ':';
        text += hex[digest[i] >> 4];
        text += hex[digest[i] & 0xf];
    }
    return text;
}

TlsCertificate Describe(SSL *connection)
{
    TlsCertificate described;
    X509 *certificate = SSL_get1_peer_certificate(connection);
    if (certificate == nullptr) {
        described.problem = "the server sent no certificate";
        return described;
    }
    described.subject = NameText(X509_get_subject_name(certificate));
    described.issuer = NameText(X509_get_issuer_name(certificate));
    described.names = AlternativeNames(certificate);
    described.validFrom = TimeText(X509_get0_notBefore(certificate));
    described.validUntil = TimeText(X509_get0_notAfter(certificate));
    described.fingerprint = Fingerprint(certificate);
    X509_free(certificate);
    const long verdict = SSL_get_verify_result(connection);
    described.verified = verdict == X509_V_OK;
    if (!described.verified)
        described.problem = X509_verify_cert_error_string(verdict);
    return described;
}

} // namespace

void TlsStream::Free::operator()(SSL *connection) const
{
    SSL_free(connection);
}

TlsStream::TlsStream(SSL *connection)
    : fConnection(connection)
{}

TlsStream::~TlsStream() = default;

status_t TlsStream::Start(int fd,
                          TlsClient &client,
                          std::unique_ptr<TlsStream> *stream,
                          TlsCertificate *peer,
                          std::string *why)
{
    SSL *connection = client.NewConnection();
    if (connection == nullptr) {
        if (why != nullptr)
            *why = "TLS could not be set up";
        return B_NO_MEMORY;
    }
    std::unique_ptr<TlsStream> made(new TlsStream(connection));
    BIO *bio = BIO_new(SocketMethod());
    if (bio == nullptr)
        return B_NO_MEMORY;
    BIO_set_data(bio, reinterpret_cast<void *>(intptr_t(fd)));
    // One BIO both ways: the connection holds the one reference.
    SSL_set_bio(connection, bio, bio);
    ERR_clear_error();
    const int result = SSL_connect(connection);
    if (result != 1) {
        made->fFinished = true;
        const int error = SSL_get_error(connection, result);
        if (error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE)
            return B_TIMED_OUT;
        if (why != nullptr)
            *why = LastErrorText();
        return B_ERROR;
    }
    if (peer != nullptr)
        *peer = Describe(connection);
    *stream = std::move(made);
    return B_OK;
}

ssize_t TlsStream::Failed(int result)
{
    const int saved = errno;
    const int error = SSL_get_error(fConnection.get(), result);
    const unsigned long reason = ERR_peek_error();
    ERR_clear_error();
    if (error == SSL_ERROR_ZERO_RETURN)
        return 0;
    // After anything else no close_notify may follow.
    fFinished = true;
    if (error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE)
        return B_TIMED_OUT;
    // A server that closes without close_notify has still closed: the
    // transfer's final reply, on the secured control connection, says
    // whether everything came.
    if (error == SSL_ERROR_SSL && ERR_GET_REASON(reason) == SSL_R_UNEXPECTED_EOF_WHILE_READING)
        return 0;
    if (error == SSL_ERROR_SYSCALL && saved != 0)
        return StatusFromErrno(saved);
    return B_ERROR;
}

ssize_t TlsStream::Send(const void *data, size_t size)
{
    size_t written = 0;
    ERR_clear_error();
    const int result = SSL_write_ex(fConnection.get(), data, size, &written);
    return result == 1 ? ssize_t(written) : Failed(result);
}

ssize_t TlsStream::Receive(void *buffer, size_t size)
{
    size_t read = 0;
    ERR_clear_error();
    const int result = SSL_read_ex(fConnection.get(), buffer, size, &read);
    return result == 1 ? ssize_t(read) : Failed(result);
}

bool TlsStream::HasPending() const
{
    return SSL_has_pending(fConnection.get()) == 1;
}

void TlsStream::Finish()
{
    if (fFinished)
        return;
    fFinished = true;
    SSL_shutdown(fConnection.get());
}

bool TlsStream::Resumed() const
{
    return TlsClient::Resumed(fConnection.get());
}

} // namespace platform
