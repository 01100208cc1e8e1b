// Loaded before a program, it makes the program trust one certificate authority more: the client itself has no switch
// for that.
#include <curl/curl.h>

#include <dlfcn.h>

#include <cstdlib>

CURLMcode curl_multi_add_handle(CURLM* multi, CURL* handle)
{
    curl_easy_setopt(handle, CURLOPT_CAINFO, std::getenv("ORV_TEST_AUTHORITY"));
    return reinterpret_cast<decltype(&curl_multi_add_handle)>(dlsym(RTLD_NEXT, "curl_multi_add_handle"))(multi, handle);
}
