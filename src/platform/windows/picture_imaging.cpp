// Pictures by the Windows Imaging Component, which is in Windows since version 7.

// clang-format off
#include <windows.h>
#include <objbase.h>
#include <wincodec.h>
// clang-format on

#include <new>
#include <span>

#include "platform/windows/com_scope.h"
#include "platform/windows/picture_decoders.h"

namespace marbex::platform {

namespace {

// Takes an interface that a function gives by its last argument; a failure gives null.
template <typename Interface, typename Function>
ComPointer<Interface> Take(Function function)
{
    Interface* given = nullptr;
    const HRESULT result = function(&given);
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
    return ComPointer<Interface>(SUCCEEDED(result) ? given : nullptr);
}

ComPointer<IWICBitmapFrameDecode> FirstFrame(IWICImagingFactory& factory, IWICStream& stream)
{
    const auto decoder = Take<IWICBitmapDecoder>([&](IWICBitmapDecoder** given) {
        return factory.CreateDecoderFromStream(&stream, nullptr, WICDecodeMetadataCacheOnDemand, given);
    });
    if (decoder == nullptr) return nullptr;
    return Take<IWICBitmapFrameDecode>([&](IWICBitmapFrameDecode** given) { return decoder->GetFrame(0, given); });
}

bool CopyPixels(IWICImagingFactory& factory, IWICBitmapFrameDecode& frame, const PixelBuffer& buffer)
{
    const auto converter =
        Take<IWICFormatConverter>([&](IWICFormatConverter** given) { return factory.CreateFormatConverter(given); });
    if (converter == nullptr ||
        FAILED(converter->Initialize(&frame, GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone, nullptr, 0.0,
                                     WICBitmapPaletteTypeCustom)))
        return false;
    const UINT rowBytes = buffer.width * 4;
    return SUCCEEDED(converter->CopyPixels(nullptr, rowBytes, rowBytes * buffer.height,
                                           reinterpret_cast<BYTE*>(buffer.pixels.get())));
}

}  // namespace

std::optional<PixelBuffer> DecodeByImaging(std::string_view file)
{
    const auto factory = Take<IWICImagingFactory>([](IWICImagingFactory** given) {
        return CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                reinterpret_cast<void**>(given));
    });
    if (factory == nullptr) return std::nullopt;
    const auto stream = Take<IWICStream>([&](IWICStream** given) { return factory->CreateStream(given); });
    // The stream only reads, but its function takes no constant bytes.
    auto* const bytes = reinterpret_cast<BYTE*>(const_cast<char*>(file.data()));
    if (stream == nullptr || FAILED(stream->InitializeFromMemory(bytes, static_cast<DWORD>(file.size()))))
        return std::nullopt;
    const auto frame = FirstFrame(*factory, *stream);
    UINT width = 0;
    UINT height = 0;
    if (frame == nullptr || FAILED(frame->GetSize(&width, &height))) return std::nullopt;
    std::optional<PixelBuffer> buffer = AllocatePixels(width, height);
    if (!buffer || !CopyPixels(*factory, *frame, *buffer)) return std::nullopt;
    const std::span pixels(buffer->pixels.get(), std::size_t{width} * height);
    for (uint32_t& pixel : pixels)
        pixel = OverWhite(pixel >> 16 & 0xFF, pixel >> 8 & 0xFF, pixel & 0xFF, pixel >> 24);
    return buffer;
}

}  // namespace marbex::platform
