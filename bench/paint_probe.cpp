// Preloaded into a console started under X: writes the monotonic time of the first image the window
// system is handed (the first flush of a painted window) to the file named by ORVA_PAINT_PROBE.
// The console itself is not changed; the probe only watches the calls Qt makes to the X library.
#include <dlfcn.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {
struct Cookie {
    unsigned int sequence;
};

bool gMarked = false;

void mark()
{
    if (gMarked)
        return;
    gMarked = true;
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    const char* path = std::getenv("ORVA_PAINT_PROBE");
    if (!path)
        return;
    if (std::FILE* f = std::fopen(path, "w")) {
        std::fprintf(f, "%lld\n", (long long)ts.tv_sec * 1000000000LL + ts.tv_nsec);
        std::fclose(f);
    }
}

// The X libraries come in with the platform plugin, loaded privately: look in them by name.
template <class F> F next(const char* name, const char* library)
{
    void* f = dlsym(RTLD_NEXT, name);
    if (!f)
        if (void* h = dlopen(library, RTLD_LAZY | RTLD_NOLOAD))
            f = dlsym(h, name);
    return reinterpret_cast<F>(f);
}
}  // namespace

extern "C" {

Cookie xcb_shm_put_image(void* c, uint32_t drawable, uint32_t gc, uint16_t tw, uint16_t th, uint16_t sx, uint16_t sy,
                         uint16_t sw, uint16_t sh, int16_t dx, int16_t dy, uint8_t depth, uint8_t format,
                         uint8_t sendEvent, uint32_t seg, uint32_t offset)
{
    using Fn = Cookie (*)(void*, uint32_t, uint32_t, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t,
                          int16_t, int16_t, uint8_t, uint8_t, uint8_t, uint32_t, uint32_t);
    static Fn real = next<Fn>("xcb_shm_put_image", "libxcb-shm.so.0");
    mark();
    return real(c, drawable, gc, tw, th, sx, sy, sw, sh, dx, dy, depth, format, sendEvent, seg, offset);
}

Cookie xcb_put_image(void* c, uint8_t format, uint32_t drawable, uint32_t gc, uint16_t w, uint16_t h, int16_t dx,
                     int16_t dy, uint8_t leftPad, uint8_t depth, uint32_t len, const uint8_t* data)
{
    using Fn = Cookie (*)(void*, uint8_t, uint32_t, uint32_t, uint16_t, uint16_t, int16_t, int16_t, uint8_t, uint8_t,
                          uint32_t, const uint8_t*);
    static Fn real = next<Fn>("xcb_put_image", "libxcb.so.1");
    mark();
    return real(c, format, drawable, gc, w, h, dx, dy, leftPad, depth, len, data);
}

}  // extern "C"
