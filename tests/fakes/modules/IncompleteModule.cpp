// A module that needs a symbol that no library defines.

extern "C" void* undefinedInEveryLibrary();

extern "C" void* _make_zu_corba_topo(void* /*exterminator*/) {
  return undefinedInEveryLibrary();
}
