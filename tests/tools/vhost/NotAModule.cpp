// A shared library that loads but is no module: it exports neither GetVireloModuleName nor
// GetModuleDefinition. vhost must refuse it.
extern "C" __attribute__((visibility("default"))) int vt_NotAModule() {
    return 1;
}
