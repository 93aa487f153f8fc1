#include "orb/ssl/handshake_failure.h"

#include <openssl/err.h>
#include <openssl/sslerr.h>
#include <openssl/x509_vfy.h>

namespace qv_ssl {
namespace {

std::string DescribeVerification(long result) {
    switch (result) {
        case X509_V_ERR_CERT_HAS_EXPIRED:
            return "shows a certificate that has expired; give it a new one, and check the clocks of both "
                   "machines";
        case X509_V_ERR_CERT_NOT_YET_VALID:
            return "shows a certificate that is not valid yet; check the clocks of both machines";
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
        case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
        case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
        case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
        case X509_V_ERR_CERT_UNTRUSTED:
        case X509_V_ERR_CERT_SIGNATURE_FAILURE:
            return "shows a certificate of an authority that is not known here; let it use one of a known "
                   "authority, "
                   "or add its authority to the file of -SSLCAfile and restart";
        case X509_V_ERR_CERT_REVOKED:
            return "shows a certificate that was revoked; give it a new one";
        case X509_V_ERR_INVALID_PURPOSE:
            return "shows a certificate that was not issued for this use; issue one for servers and clients";
        default:
            return std::string("shows a certificate that can't be verified (") +
                   X509_verify_cert_error_string(result) + "); give it another one";
    }
}

bool IsForeignProtocol(int reason) {
    switch (reason) {
        case SSL_R_WRONG_VERSION_NUMBER:
        case SSL_R_HTTP_REQUEST:
        case SSL_R_HTTPS_PROXY_REQUEST:
        case SSL_R_UNKNOWN_PROTOCOL:
        case SSL_R_PACKET_LENGTH_TOO_LONG:
        case SSL_R_UNEXPECTED_MESSAGE:
        case SSL_R_RECORD_LENGTH_MISMATCH:
        case SSL_R_BAD_RECORD_TYPE:
            return true;
        default:
            return false;
    }
}

}  // namespace

std::string DescribeAlert(int alert) {
    switch (alert) {
        case SSL_AD_UNKNOWN_CA:
            return "does not know the authority of this side's certificate; add the authority to its "
                   "authority file";
        case SSL_AD_CERTIFICATE_EXPIRED:
            return "says that this side's certificate has expired; put a new one in its place";
        case SSL_AD_CERTIFICATE_REVOKED:
            return "says that this side's certificate was revoked; put a new one in its place";
        case SSL_AD_BAD_CERTIFICATE:
        case SSL_AD_UNSUPPORTED_CERTIFICATE:
        case SSL_AD_CERTIFICATE_UNKNOWN:
            return "refuses this side's certificate; see what the peer itself reports";
        case SSL_AD_CERTIFICATE_REQUIRED:
            return "wants a certificate and got none; give this side -SSLCertificate and -SSLPrivateKey";
        case SSL_AD_PROTOCOL_VERSION:
            return "does not speak TLS 1.2 or later; renew its SSL library or set-up";
        case SSL_AD_HANDSHAKE_FAILURE:
            return "found nothing in common, or wants a certificate and got none; see what the peer itself "
                   "reports";
        default:
            return std::string("refuses the connection (") + SSL_alert_desc_string_long(alert) +
                   "); see what the peer itself reports";
    }
}

std::string DescribeFailure(unsigned long error, long verify_result) {
    if (error == 0) {
        return "closed the connection within the handshake; see what the peer itself reports";
    }
    const int reason = ERR_GET_REASON(error);
    if (ERR_GET_LIB(error) != ERR_LIB_SSL) {
        const char* const text = ERR_reason_error_string(error);
        return std::string("failed in the handshake (") + (text != nullptr ? text : "no reason known") +
               "); see what the peer itself reports";
    }
    if (reason > SSL_AD_REASON_OFFSET) {
        return DescribeAlert(reason - SSL_AD_REASON_OFFSET);
    }
    if (IsForeignProtocol(reason)) {
        return "does not speak TLS on this port; let it use SSL (ssliop) or the plain port";
    }
    switch (reason) {
        case SSL_R_CERTIFICATE_VERIFY_FAILED:
            return DescribeVerification(verify_result);
        case SSL_R_PEER_DID_NOT_RETURN_A_CERTIFICATE:
            return "shows no certificate; give it one of a known authority";
        case SSL_R_UNSUPPORTED_PROTOCOL:
        case SSL_R_VERSION_TOO_LOW:
        case SSL_R_WRONG_SSL_VERSION:
        case SSL_R_NO_PROTOCOLS_AVAILABLE:
            return "does not offer TLS 1.2 or later; renew its SSL library or set-up";
        case SSL_R_NO_SHARED_CIPHER:
            return "offers no cipher that is accepted here; check -SSLCipherList on both sides";
        case SSL_R_UNEXPECTED_EOF_WHILE_READING:
            return "closed the connection within the handshake; see what the peer itself reports";
        default: {
            const char* const text = ERR_reason_error_string(error);
            return std::string("broke off the handshake (") + (text != nullptr ? text : "no reason known") +
                   "); see what the peer itself reports";
        }
    }
}

}  // namespace qv_ssl
