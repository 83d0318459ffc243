// The few functions of libcurl that are used, found by name at the first request: a program that asks nothing of the
// web does not carry the library and its parts in memory.
#pragma once

#include <curl/curl.h>

namespace corvane {

struct CurlLibrary {
  decltype(&curl_global_init) globalInit = nullptr;
  decltype(&curl_easy_init) easyInit = nullptr;
  decltype(&curl_easy_setopt) easySetopt = nullptr;
  decltype(&curl_easy_getinfo) easyGetinfo = nullptr;
  decltype(&curl_easy_strerror) easyStrerror = nullptr;
  decltype(&curl_easy_cleanup) easyCleanup = nullptr;
  decltype(&curl_multi_init) multiInit = nullptr;
  decltype(&curl_multi_setopt) multiSetopt = nullptr;
  decltype(&curl_multi_add_handle) multiAddHandle = nullptr;
  decltype(&curl_multi_remove_handle) multiRemoveHandle = nullptr;
  decltype(&curl_multi_socket_action) multiSocketAction = nullptr;
  decltype(&curl_multi_info_read) multiInfoRead = nullptr;
  decltype(&curl_multi_cleanup) multiCleanup = nullptr;
  decltype(&curl_slist_append) slistAppend = nullptr;
  decltype(&curl_slist_free_all) slistFreeAll = nullptr;
  decltype(&curl_url) url = nullptr;
  decltype(&curl_url_set) urlSet = nullptr;
  decltype(&curl_url_get) urlGet = nullptr;
  decltype(&curl_url_cleanup) urlCleanup = nullptr;
  decltype(&curl_free) free = nullptr;

  // Main thread. Stays loaded; null where the machine has no such library.
  [[nodiscard]] static const CurlLibrary* load();
};

}  // namespace corvane
