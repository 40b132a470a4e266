#include "cgi/StartUp.h"

#include <pthread.h>

#include "fileman/CFileManager.h"

void* read_conf_thread(void* /*unused*/) {
    if (g_FileMan != nullptr)
        g_FileMan->scanFilters();
    return nullptr;
}

void runStartUpThread() {
    pthread_t thread = 0;
    if (::pthread_create(&thread, nullptr, &read_conf_thread, nullptr) == 0)
        ::pthread_join(thread, nullptr);
    else
        read_conf_thread(nullptr);
}
