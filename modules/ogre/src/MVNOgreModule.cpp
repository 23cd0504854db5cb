// Module entry points (filled in with the service registrations).
extern "C" int MVNOgre_module_install(void*) { return 0; }
