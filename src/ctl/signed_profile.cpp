#include "ctl/signed_profile.h"

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/err.h>

#include <memory>

namespace corvane::ctl {
namespace {

using Message = std::unique_ptr<CMS_ContentInfo, decltype(&CMS_ContentInfo_free)>;
using Source = std::unique_ptr<BIO, decltype(&BIO_free)>;

constexpr char kSequence = 0x30;  // what such a message begins with

std::unexpected<Error> refused(std::string_view why) {
  return failure("CRVProfile", 2,
                 std::string(why) +
                     " Unwrap it with `security cms -D -i FILE -o UNWRAPPED`, or on other systems with "
                     "`openssl cms -verify -noverify -inform DER -in FILE -out UNWRAPPED`.");
}

}  // namespace

bool looksWrapped(std::string_view bytes) { return bytes.starts_with(kSequence); }

Result<std::string> unwrapped(std::string_view bytes) {
  const Source source(BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size())), &BIO_free);
  const Message message(source ? d2i_CMS_bio(source.get(), nullptr) : nullptr, &CMS_ContentInfo_free);
  ERR_clear_error();
  if (!message) return refused("The file looks like a signed profile, but its wrapping is damaged.");
  if (OBJ_obj2nid(CMS_get0_type(message.get())) != NID_pkcs7_signed)
    return refused("The profile is wrapped, but not signed: it may be encrypted.");
  auto* const* content = CMS_get0_content(message.get());
  if (content == nullptr || *content == nullptr) return refused("The profile's signature holds no profile.");
  const auto length = static_cast<std::size_t>(ASN1_STRING_length(*content));
  return std::string(reinterpret_cast<const char*>(ASN1_STRING_get0_data(*content)), length);
}

}  // namespace corvane::ctl
