/* no_entry.c - a shared library that loads but has no DllGetClassObject. */
__attribute__((visibility("default"))) int QZNoEntryPresent(void) { return 1; }
