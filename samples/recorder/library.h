/*
 * VexoCtrlSDK.dll, loaded by name.
 *
 * Why not linked: the system does not start a program whose libraries are missing, and says
 * nothing; a program that loads them can show what is wrong. It also decides when the library is
 * loaded and freed, and needs no import library of its compiler's make. A program that would rather
 * be linked defines RECORDER_IS_LINKED and links VexoCtrlSDK.lib; the rest of it stays as it is.
 */
#ifndef RECORDER_LIBRARY_H
#define RECORDER_LIBRARY_H

#include <windows.h>

#include "VexoCtrlSDK.h"

typedef struct Library {
  HMODULE module; /* null when it is linked or not loaded */
  VexoInitializeFunction initialize;
  VexoUninitializeFunction uninitialize;
  VexoCommandProcFunction command_proc;
} Library;

/* Loads the library and finds its exports. Returns 0 or the system's error. */
DWORD Library_Load(Library* library);

/* Nothing of the library may be running, and nothing of it may be read afterwards. */
void Library_Free(Library* library);

#endif /* RECORDER_LIBRARY_H */
