/* A library that is, or pretends to be, a branch: TAG and VERSION say what it tells, UNRESOLVED lets it ask for a
   symbol that nobody has, KIND gives it a kernel with that in the name. It imports from the core and from the
   mathematics library without naming either as needed. */
struct note {
    unsigned name_size, text_size, type;
    char name[4];
    char text[16];
};
__attribute__((section(".note.orv"), used, aligned(4))) static const struct note note = {
    4, sizeof VERSION > 1 ? 16 : 0, sizeof VERSION > 1 ? 1 : 2, "orv", VERSION};

__attribute__((visibility("default"))) int dll_cpu_version(void) { return TAG; }

#ifdef KIND
#define KERNEL_(kind) orv_test_##kind##_code
#define KERNEL(kind) KERNEL_(kind)
__attribute__((visibility("default"))) int KERNEL(KIND)(void) { return TAG; }
#endif

#ifdef UNRESOLVED
void orv_serv_of_another_time(void);
__attribute__((visibility("default"))) void asks(void) { orv_serv_of_another_time(); }
#endif

void* orv_serv_allocate(long bytes, long alignment);
void orv_serv_deallocate(void* block);
double cos(double);

/* cos(x) by way of a block of the core's memory. */
__attribute__((visibility("default"))) double through_core_and_libm(double x)
{
    double* block = orv_serv_allocate(sizeof x, 128);
    *block = cos(x);
    const double result = *block;
    orv_serv_deallocate(block);
    return result;
}
