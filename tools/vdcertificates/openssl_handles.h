#pragma once

#include <memory>

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

namespace tool {

template <auto Free>
struct OpensslFree {
    template <class T>
    void operator()(T* object) const noexcept {
        Free(object);
    }
};

using BioHandle = std::unique_ptr<BIO, OpensslFree<BIO_free_all>>;
using CmsHandle = std::unique_ptr<CMS_ContentInfo, OpensslFree<CMS_ContentInfo_free>>;
using KeyHandle = std::unique_ptr<EVP_PKEY, OpensslFree<EVP_PKEY_free>>;
using CertificateHandle = std::unique_ptr<X509, OpensslFree<X509_free>>;
using StoreHandle = std::unique_ptr<X509_STORE, OpensslFree<X509_STORE_free>>;
using StoreContextHandle = std::unique_ptr<X509_STORE_CTX, OpensslFree<X509_STORE_CTX_free>>;

} // namespace tool
