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

/* The device takes export names in wide characters, the desktop in narrow ones. */
#ifdef UNDER_CE
#define WIDE(name) L##name
#define FIND_EXPORT(module, name) GetProcAddressW(module, WIDE(name))
#else
#define FIND_EXPORT(module, name) GetProcAddress(module, name)
#endif

typedef void (*AnyFunction)(void);

DWORD Library_Load(Library* library) {
  const HMODULE module = LoadLibraryW(L"VexoCtrlSDK.dll");
  if (module == NULL) return GetLastError();
  library->module = module;
  library->initialize =
      (VexoInitializeFunction)(AnyFunction)FIND_EXPORT(module, VEXO_EXPORT_INITIALIZE);
  library->uninitialize =
      (VexoUninitializeFunction)(AnyFunction)FIND_EXPORT(module, VEXO_EXPORT_UNINITIALIZE);
  library->command_proc =
      (VexoCommandProcFunction)(AnyFunction)FIND_EXPORT(module, VEXO_EXPORT_COMMAND_PROC);
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
