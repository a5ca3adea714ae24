// What a damaged stack ends in on i386. The C library has this routine too, in a file that is not
// marked for control-flow enforcement: linking that would take the mark from the module.
#if defined(__i386__)

extern "C" [[noreturn]] void __stack_chk_fail();

extern "C" [[noreturn, gnu::used, gnu::visibility("hidden")]] void fail_stack_check() __asm__(
    "__stack_chk_fail_local");
void fail_stack_check() { __stack_chk_fail(); }

#endif
