#include "library.h"

#ifdef RECORDER_IS_LINKED

DWORD Library_Load(Library* library) {
  library->module = NULL;
  library->initialize = VEXOAPI_Initialize;
  library->uninitialize = VEXOAPI_Uninitialize;
  library->command_proc = VEXOAPI_CommandProc;
  return 0;
}

#else

/* The device has export names in wide characters, the desktop in narrow ones. */
#ifdef UNDER_CE
#define FIND_EXPORT(module, name) GetProcAddressW(module, L##name)
#else
#define FIND_EXPORT(module, name) GetProcAddress(module, name)
#endif

typedef void (*AnyFunction)(void);

DWORD Library_Load(Library* library) {
  library->module = LoadLibraryW(L"VexoCtrlSDK.dll");
  if (library->module == NULL) return GetLastError();
  library->initialize =
      (int (*)(VexoWindow))(AnyFunction)FIND_EXPORT(library->module, "VEXOAPI_Initialize");
  library->uninitialize =
      (void (*)(void))(AnyFunction)FIND_EXPORT(library->module, "VEXOAPI_Uninitialize");
  library->command_proc =
      (int (*)(uint32_t, void*))(AnyFunction)FIND_EXPORT(library->module, "VEXOAPI_CommandProc");
  if (library->initialize == NULL || library->uninitialize == NULL ||
      library->command_proc == NULL) {
    Library_Free(library);
    return ERROR_PROC_NOT_FOUND;
  }
  return 0;
}

#endif

void Library_Free(Library* library) {
  if (library->module != NULL) FreeLibrary(library->module);
  library->module = NULL;
}
