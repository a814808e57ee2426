#include "tests/support/Certificates.h"

#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <stdexcept>

namespace support {
namespace {

constexpr long kDay = 86400;

template <typename Value>
Value* made(Value* value) {
  if (value == nullptr) {
    throw std::runtime_error("OpenSSL makes no certificate");
  }
  return value;
}

std::shared_ptr<EVP_PKEY> makeKey() {
  return {made(EVP_EC_gen("P-256")), EVP_PKEY_free};
}

void addName(X509_NAME* name, const char* field, const std::string& value) {
  X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(value.c_str()), -1, -1, 0);
}

void addExtension(X509& certificate, X509& issuer, int id, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, &issuer, &certificate, nullptr, nullptr, 0);
  X509_EXTENSION* const extension = made(X509V3_EXT_conf_nid(nullptr, &context, id, value.c_str()));
  X509_add_ext(&certificate, extension, -1);
  X509_EXTENSION_free(extension);
}

// begin, end: seconds from now.
std::shared_ptr<X509> makeCertificate(const std::string& name, EVP_PKEY& key, long serial,
                                      long begin, long end) {
  std::shared_ptr<X509> certificate(made(X509_new()), X509_free);
  X509_set_version(certificate.get(), X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), begin);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), end);
  X509_set_pubkey(certificate.get(), &key);
  addName(X509_get_subject_name(certificate.get()), "O", "Tests");
  addName(X509_get_subject_name(certificate.get()), "CN", name);
  return certificate;
}

template <typename Write>
std::string writeFile(const TemporaryDirectory& directory, const std::string& name, Write write) {
  const std::string path = directory.file(name);
  FILE* const file = made(std::fopen(path.c_str(), "w"));
  write(file);
  std::fclose(file);
  return path;
}

std::string writeCertificate(const TemporaryDirectory& directory, const std::string& name,
                             X509& certificate) {
  return writeFile(directory, name, [&](FILE* file) { PEM_write_X509(file, &certificate); });
}

}  // namespace

Authority::Authority(const TemporaryDirectory& directory, const std::string& name)
    : directory_(directory),
      name_(name),
      key_(makeKey()),
      certificate_(makeCertificate(name, *key_, 1, -kDay, kDay)),
      list_(made(X509_CRL_new()), X509_CRL_free) {
  X509_set_issuer_name(certificate_.get(), X509_get_subject_name(certificate_.get()));
  addExtension(*certificate_, *certificate_, NID_basic_constraints, "critical,CA:TRUE");
  addExtension(*certificate_, *certificate_, NID_key_usage, "critical,keyCertSign,cRLSign");
  X509_sign(certificate_.get(), key_.get(), EVP_sha256());
  file_ = writeCertificate(directory_, name_ + ".pem", *certificate_);
}

Certificate Authority::issue(const std::string& name, Validity validity, const std::string& host) {
  Certificate result;
  result.serial = ++lastSerial_;
  const std::shared_ptr<EVP_PKEY> key = makeKey();
  const long end = validity == Validity::kExpired ? -kDay / 2 : kDay / 2;
  const std::shared_ptr<X509> certificate = makeCertificate(name, *key, result.serial, -kDay, end);
  X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate_.get()));
  const bool isAddress = host.find_first_not_of("0123456789.") == std::string::npos;
  addExtension(*certificate, *certificate_, NID_subject_alt_name,
               (isAddress ? "IP:" : "DNS:") + host);
  X509_sign(certificate.get(), key_.get(), EVP_sha256());
  const std::string file = name_ + "-" + name;
  result.certificate = writeCertificate(directory_, file + ".pem", *certificate);
  result.key = writeFile(directory_, file + ".key", [&](FILE* out) {
    PEM_write_PrivateKey(out, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
  });
  return result;
}

void Authority::revoke(const Certificate& certificate) {
  X509_REVOKED* const entry = made(X509_REVOKED_new());
  ASN1_INTEGER* const serial = made(ASN1_INTEGER_new());
  ASN1_INTEGER_set(serial, certificate.serial);
  X509_REVOKED_set_serialNumber(entry, serial);
  ASN1_INTEGER_free(serial);
  ASN1_TIME* const when = made(X509_gmtime_adj(nullptr, -60));
  X509_REVOKED_set_revocationDate(entry, when);
  ASN1_TIME_free(when);
  X509_CRL_add0_revoked(list_.get(), entry);
}

std::string Authority::revoked() const {
  X509_CRL_set_version(list_.get(), X509_CRL_VERSION_2);
  X509_CRL_set_issuer_name(list_.get(), X509_get_subject_name(certificate_.get()));
  ASN1_TIME* const last = made(X509_gmtime_adj(nullptr, -kDay));
  ASN1_TIME* const next = made(X509_gmtime_adj(nullptr, kDay));
  X509_CRL_set1_lastUpdate(list_.get(), last);
  X509_CRL_set1_nextUpdate(list_.get(), next);
  ASN1_TIME_free(last);
  ASN1_TIME_free(next);
  X509_CRL_sign(list_.get(), key_.get(), EVP_sha256());
  return writeFile(directory_, name_ + ".crl",
                   [&](FILE* file) { PEM_write_X509_CRL(file, list_.get()); });
}

}  // namespace support
