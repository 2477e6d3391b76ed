// A shared object with three of the four entry points of a plug-in.

extern "C" {

int lib_init(void**) { return 0; }
int get_validation_point(char*, int) { return 0; }
int lib_finish(void**) { return 0; }

}  // extern "C"
