// Linked into every test program and tool of an address-sanitizer build
// (MVN_SANITIZE).
// Under the address sanitizer nothing is unloaded. A library unloaded
// before the process ends (the engine's plugins, the GL driver the GL
// library drops with its display) loses its name in the leak report, and
// the suppressions (tests/sanitizers/lsan.supp) match the memory the GL
// driver keeps for the life of the process by library name. Defined in the
// program, this wins over the C library's for every library.
extern "C" int dlclose(void*) { return 0; }
