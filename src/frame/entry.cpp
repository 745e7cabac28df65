// entry.cpp - the library's load-time entry.  On Windows it asks the system
// not to send thread attach/detach notifications; static data is initialised
// by the runtime.  Linux needs no entry.
#include "platform.h"

#if INTRINS_WINDOWS
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(instance);
    return TRUE;
}
#endif
