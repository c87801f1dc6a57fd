/* A DLL of forwards alone has no code, but the linker wants a file. */
typedef int Nothing;
