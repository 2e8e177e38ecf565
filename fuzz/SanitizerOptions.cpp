/// Read by the address sanitizer: more memory than this is not to be had, as it would be on a small machine. Blocks are
/// known by a few of their callers, since a blender makes hundreds of them.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=256:malloc_context_size=5";
}
