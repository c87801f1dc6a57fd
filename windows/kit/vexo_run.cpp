// VexoRun.exe: what it does is the board's.
extern "C" __declspec(dllimport) int VexoDesk_RunScripts(int count, const char* const* words);

int main(int count, char** words) { return VexoDesk_RunScripts(count - 1, words + 1); }
