#include "platform/net/curl_library.h"

#include <dlfcn.h>

#include <memory>
#include <type_traits>

namespace corvane {

const CurlLibrary* CurlLibrary::load() {
  static const auto loaded = []() -> std::unique_ptr<CurlLibrary> {
    void* library = ::dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return nullptr;
    auto curl = std::make_unique<CurlLibrary>();
    bool complete = true;
    const auto find = [&](auto& function, const char* name) {
      function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, name));
      complete = complete && function != nullptr;
    };
    find(curl->globalInit, "curl_global_init");
    find(curl->easyInit, "curl_easy_init");
    find(curl->easySetopt, "curl_easy_setopt");
    find(curl->easyGetinfo, "curl_easy_getinfo");
    find(curl->easyStrerror, "curl_easy_strerror");
    find(curl->easyCleanup, "curl_easy_cleanup");
    find(curl->multiInit, "curl_multi_init");
    find(curl->multiSetopt, "curl_multi_setopt");
    find(curl->multiAddHandle, "curl_multi_add_handle");
    find(curl->multiRemoveHandle, "curl_multi_remove_handle");
    find(curl->multiSocketAction, "curl_multi_socket_action");
    find(curl->multiInfoRead, "curl_multi_info_read");
    find(curl->multiCleanup, "curl_multi_cleanup");
    find(curl->slistAppend, "curl_slist_append");
    find(curl->slistFreeAll, "curl_slist_free_all");
    find(curl->url, "curl_url");
    find(curl->urlSet, "curl_url_set");
    find(curl->urlGet, "curl_url_get");
    find(curl->urlCleanup, "curl_url_cleanup");
    find(curl->free, "curl_free");
    if (!complete || curl->globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) return nullptr;
    return curl;
  }();
  return loaded.get();
}

}  // namespace corvane
