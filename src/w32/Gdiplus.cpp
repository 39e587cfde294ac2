#include "w32/Gdiplus.h"

#include "w32/Scoped.h"
#include "w32/SystemLibrary.h"

namespace w32 {
namespace {

// Values of GDI+'s own enumerations and status, as its headers define them.
constexpr int kOk = 0;
constexpr int kPixelFormat32bppARGB = 0x0026200A;
constexpr int kInterpolationModeHighQualityBicubic = 7;
constexpr int kPixelOffsetModeHighQuality = 2;
constexpr int kWrapModeTileFlipXY = 3;
constexpr int kUnitPixel = 2;

// The first version of GDI+'s start-up input, as gdiplus.dll expects it.
struct StartupInputV1 {
    UINT32 GdiplusVersion = 1;
    void* DebugEventCallback = nullptr;
    BOOL SuppressBackgroundThread = FALSE;
    BOOL SuppressExternalCodecs = FALSE;
};

using Release = int(WINAPI*)(void*);

// The few flat functions this program calls.
struct FlatApi {
    int(WINAPI* GdiplusStartup)(ULONG_PTR*, const StartupInputV1*, void*) = nullptr;
    void(WINAPI* GdiplusShutdown)(ULONG_PTR) = nullptr;
    int(WINAPI* GdipCreateFromHDC)(HDC, void**) = nullptr;
    Release GdipDeleteGraphics = nullptr;
    int(WINAPI* GdipSetInterpolationMode)(void*, int) = nullptr;
    int(WINAPI* GdipSetPixelOffsetMode)(void*, int) = nullptr;
    int(WINAPI* GdipCreateBitmapFromScan0)(INT, INT, INT, INT, BYTE*, void**) = nullptr;
    Release GdipDisposeImage = nullptr;
    int(WINAPI* GdipCreateImageAttributes)(void**) = nullptr;
    int(WINAPI* GdipSetImageAttributesWrapMode)(void*, int, DWORD, BOOL) = nullptr;
    Release GdipDisposeImageAttributes = nullptr;
    int(WINAPI* GdipDrawImageRectRectI)(void*, void*, INT, INT, INT, INT, INT, INT, INT, INT, int, const void*, void*,
                                        void*) = nullptr;
};

struct GdiplusState {
    ScopedModule library;
    FlatApi api;
    bool running = false;
};

GdiplusState& State() {
    static GdiplusState state;
    return state;
}

template <typename Function>
bool Resolve(HMODULE library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
    return function != nullptr;
}

bool ResolveAll(HMODULE library, FlatApi& api) {
    return Resolve(library, "GdiplusStartup", api.GdiplusStartup) &&
           Resolve(library, "GdiplusShutdown", api.GdiplusShutdown) &&
           Resolve(library, "GdipCreateFromHDC", api.GdipCreateFromHDC) &&
           Resolve(library, "GdipDeleteGraphics", api.GdipDeleteGraphics) &&
           Resolve(library, "GdipSetInterpolationMode", api.GdipSetInterpolationMode) &&
           Resolve(library, "GdipSetPixelOffsetMode", api.GdipSetPixelOffsetMode) &&
           Resolve(library, "GdipCreateBitmapFromScan0", api.GdipCreateBitmapFromScan0) &&
           Resolve(library, "GdipDisposeImage", api.GdipDisposeImage) &&
           Resolve(library, "GdipCreateImageAttributes", api.GdipCreateImageAttributes) &&
           Resolve(library, "GdipSetImageAttributesWrapMode", api.GdipSetImageAttributesWrapMode) &&
           Resolve(library, "GdipDisposeImageAttributes", api.GdipDisposeImageAttributes) &&
           Resolve(library, "GdipDrawImageRectRectI", api.GdipDrawImageRectRectI);
}

// One GDI+ object, released by its flat function on every path.
class GdiplusObject {
public:
    explicit GdiplusObject(Release release) : release_(release) {}
    ~GdiplusObject() {
        if (object_) release_(object_);
    }
    GdiplusObject(const GdiplusObject&) = delete;
    GdiplusObject& operator=(const GdiplusObject&) = delete;
    void* Get() const { return object_; }
    void** Put() { return &object_; }

private:
    Release release_;
    void* object_ = nullptr;
};

}  // namespace

bool StartGdiplus(std::uintptr_t& token) {
    token = 0;
    GdiplusState& state = State();
    state.library.Reset(LoadSystemLibrary(L"gdiplus.dll"));
    if (!state.library || !ResolveAll(state.library.Get(), state.api)) {
        state.api = {};
        state.library.Reset();
        return false;
    }
    const StartupInputV1 input;
    ULONG_PTR started = 0;
    state.running = state.api.GdiplusStartup(&started, &input, nullptr) == kOk;
    token = started;
    return state.running;
}

void StopGdiplus(std::uintptr_t token) {
    GdiplusState& state = State();
    if (!state.library) return;
    state.running = false;
    state.api.GdiplusShutdown(static_cast<ULONG_PTR>(token));
    state.api = {};
    state.library.Reset();
}

bool IsGdiplusRunning() { return State().running; }

bool DrawImageScaled(HDC dc, const RECT& target, const ArgbImage& image) {
    const GdiplusState& state = State();
    if (!state.running || image.width <= 0 || image.height <= 0 ||
        image.pixels.size() != static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height))
        return false;
    const FlatApi& api = state.api;

    GdiplusObject graphics(api.GdipDeleteGraphics);
    if (api.GdipCreateFromHDC(dc, graphics.Put()) != kOk) return false;
    api.GdipSetInterpolationMode(graphics.Get(), kInterpolationModeHighQualityBicubic);
    // Source and target pixel centres line up: the picture is not shifted by half a pixel.
    api.GdipSetPixelOffsetMode(graphics.Get(), kPixelOffsetModeHighQuality);

    // GDI+ only reads the pixels here; its signature is not const.
    auto* scan0 = reinterpret_cast<BYTE*>(const_cast<std::uint32_t*>(image.pixels.data()));
    GdiplusObject bitmap(api.GdipDisposeImage);
    if (api.GdipCreateBitmapFromScan0(image.width, image.height, image.width * 4, kPixelFormat32bppARGB, scan0,
                                      bitmap.Put()) != kOk)
        return false;

    // The interpolation reads beyond the image's edges: mirrored pixels keep its border from fading.
    GdiplusObject attributes(api.GdipDisposeImageAttributes);
    if (api.GdipCreateImageAttributes(attributes.Put()) != kOk) return false;
    api.GdipSetImageAttributesWrapMode(attributes.Get(), kWrapModeTileFlipXY, 0, FALSE);

    return api.GdipDrawImageRectRectI(graphics.Get(), bitmap.Get(), target.left, target.top, target.right - target.left,
                                      target.bottom - target.top, 0, 0, image.width, image.height, kUnitPixel,
                                      attributes.Get(), nullptr, nullptr) == kOk;
}

}  // namespace w32
