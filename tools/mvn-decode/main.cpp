// mvn-decode FILE [--at T1,T2,...] [--frames N] [--audio] [--hw] -o DIR
//
// Decodes the pictures at the given times (seconds of the clip) or the first
// N pictures with FFmpegDecoderImplAsync, writes each as DIR/NNNNN.bgra (raw
// B,G,R,A bytes, NNNNN the request's number) and prints one line per request.
// With --audio it writes the decoded audio as DIR/audio.raw and prints its
// format. Exit status: 0 done, 1 bad arguments, 2 the file does not open,
// 3 a request failed.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "FFmpegDecoderImplAsync.h"
#include "MVNFFmpegLog.h"
#include "MVNToolSetup.h"
#include "core/MVNLog.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
#include <libavutil/samplefmt.h>
#include <libswscale/swscale.h>
}

namespace {

struct Options {
    std::string file;
    std::vector<double> times;
    int frames = 0;
    bool audio = false;
    bool hardware = false;
    std::string outDir;
};

void Usage(FILE* to) {
    std::fprintf(to,
                 "usage: mvn-decode FILE [--at T1,T2,...] [--frames N] [--audio] [--hw] -o DIR\n"
                 "  --at      pictures at these times, in seconds of the clip\n"
                 "  --frames  the first N pictures, in order\n"
                 "  --audio   all audio to DIR/audio.raw\n"
                 "  --hw      ask for hardware decoding\n"
                 "pictures are written as DIR/NNNNN.bgra, raw B,G,R,A bytes\n");
}

bool ParseTimes(const std::string& text, std::vector<double>* out) {
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, ',')) {
        char* end = nullptr;
        errno = 0;
        double t = std::strtod(item.c_str(), &end);
        if (item.empty() || *end != '\0' || errno != 0)
            return false;
        out->push_back(t);
    }
    return !out->empty();
}

// 0 ok, 1 bad arguments (message printed), -1 help printed.
int ParseArgs(int argc, char** argv, Options* o) {
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto value = [&](const char* name) -> const char* {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "mvn-decode: %s needs a value\n", name);
                return nullptr;
            }
            return argv[++i];
        };
        if (a == "-h" || a == "--help") {
            Usage(stdout);
            return -1;
        } else if (a == "--at") {
            const char* v = value("--at");
            if (!v)
                return 1;
            if (!ParseTimes(v, &o->times)) {
                std::fprintf(stderr, "mvn-decode: --at wants seconds separated by commas, got '%s'\n", v);
                return 1;
            }
        } else if (a == "--frames") {
            const char* v = value("--frames");
            if (!v)
                return 1;
            char* end = nullptr;
            long n = std::strtol(v, &end, 10);
            if (*end != '\0' || n <= 0 || n > 1000000) {
                std::fprintf(stderr, "mvn-decode: --frames wants a positive count, got '%s'\n", v);
                return 1;
            }
            o->frames = static_cast<int>(n);
        } else if (a == "--audio") {
            o->audio = true;
        } else if (a == "--hw") {
            o->hardware = true;
        } else if (a == "-o") {
            const char* v = value("-o");
            if (!v)
                return 1;
            o->outDir = v;
        } else if (!a.empty() && a[0] == '-') {
            std::fprintf(stderr, "mvn-decode: unknown option %s\n", a.c_str());
            return 1;
        } else if (o->file.empty()) {
            o->file = a;
        } else {
            std::fprintf(stderr, "mvn-decode: one file only, got '%s' and '%s'\n", o->file.c_str(), a.c_str());
            return 1;
        }
    }
    if (o->file.empty() || o->outDir.empty()) {
        std::fprintf(stderr, "mvn-decode: a FILE and -o DIR are needed\n");
        Usage(stderr);
        return 1;
    }
    if (o->times.empty() && o->frames == 0 && !o->audio) {
        std::fprintf(stderr, "mvn-decode: nothing to do: give --at, --frames or --audio\n");
        return 1;
    }
    if (!o->times.empty() && o->frames > 0) {
        std::fprintf(stderr, "mvn-decode: --at and --frames exclude each other\n");
        return 1;
    }
    return 0;
}

bool WriteFile(const std::string& path, const uint8_t* data, size_t size) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return static_cast<bool>(out);
}

// Turns the decoder's packed pictures into BGRA of the same size.
class BgraWriter {
public:
    BgraWriter(int width, int height, int format) : mWidth(width), mHeight(height), mFormat(format) {
        mSws = sws_getContext(width, height, static_cast<AVPixelFormat>(format), width, height, AV_PIX_FMT_BGRA,
                              SWS_POINT, nullptr, nullptr, nullptr);
        mBgra.resize(static_cast<size_t>(width) * height * 4);
    }
    ~BgraWriter() { sws_freeContext(mSws); }
    bool Write(const uint8_t* picture, const std::string& path) {
        if (!mSws)
            return false;
        const uint8_t* src[4] = {};
        int srcLines[4] = {};
        if (av_image_fill_arrays(const_cast<uint8_t**>(src), srcLines, picture, static_cast<AVPixelFormat>(mFormat),
                                 mWidth, mHeight, 1) < 0)
            return false;
        uint8_t* dst[4] = {mBgra.data()};
        int dstLines[4] = {mWidth * 4};
        sws_scale(mSws, src, srcLines, 0, mHeight, dst, dstLines);
        return WriteFile(path, mBgra.data(), mBgra.size());
    }

private:
    int mWidth;
    int mHeight;
    int mFormat;
    SwsContext* mSws = nullptr;
    std::vector<uint8_t> mBgra;
};

std::string PictureName(const std::string& dir, int n) {
    char name[32];
    std::snprintf(name, sizeof name, "%05d.bgra", n);
    return dir + "/" + name;
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    int parsed = ParseArgs(argc, argv, &o);
    if (parsed != 0)
        return parsed < 0 ? 0 : 1;
    // The decoder's own lines are for MORVANE_LOG_LEVEL=...; by default the
    // tool says what went wrong itself (a video-only file "lacks" audio).
    if (!std::getenv("MORVANE_LOG_LEVEL"))
        Morvane::setLogLevel(Morvane::MVNLogLevel::Off);
    // FFmpeg's own complaint is quoted in the tool's message instead.
    Morvane::MVNToolSetup::keepStandardDescriptors();
    Morvane::MVNFFmpegLog::install(std::getenv("MORVANE_LOG_LEVEL") != nullptr, AV_LOG_ERROR);

    std::error_code ec;
    std::filesystem::create_directories(o.outDir, ec);
    if (ec) {
        std::fprintf(stderr, "mvn-decode: cannot create %s: %s\n", o.outDir.c_str(), ec.message().c_str());
        return 1;
    }

    codec::FFmpegDecoderImplAsync decoder(o.file.c_str(), 0, 0, false, 0, -1, o.hardware);
    if (decoder.Init() != 0) {
        const std::string why = Morvane::MVNFFmpegLog::lastError();
        std::fprintf(stderr, "mvn-decode: %s does not open as media%s%s\n", o.file.c_str(), why.empty() ? "" : ": ",
                     why.c_str());
        return 2;
    }
    codec::MediaInfo info;
    decoder.GetMediaInfo(&info);
    int status = 0;

    const bool pictures = !o.times.empty() || o.frames > 0;
    if (pictures && !info.has_video) {
        std::fprintf(stderr, "mvn-decode: %s has no video\n", o.file.c_str());
        status = 3;
    } else if (pictures) {
        const int width = decoder.GetOutputWidth();
        const int height = decoder.GetOutputHeight();
        BgraWriter writer(width, height, decoder.OutputPixelFormat());
        std::vector<uint8_t> picture(static_cast<size_t>(decoder.GetFrameBufferSize()));
        bool havePicture = false;
        double pictureTime = -1;
        const int count = o.frames > 0 ? o.frames : static_cast<int>(o.times.size());
        for (int i = 0; i < count; ++i) {
            const double request = o.frames > 0 ? -1.0 : o.times[static_cast<size_t>(i)];
            int size = static_cast<int>(picture.size());
            int kind = 0;
            double time = -1;
            int ret = decoder.NextVideo(request, picture.data(), &size, &kind, &time);
            if (ret == 0) {
                havePicture = true;
                pictureTime = time;
            }
            // 2: the picture handed out last stands for this request.
            const bool shown = (ret == 0 || ret == 2) && havePicture;
            if (shown && !writer.Write(picture.data(), PictureName(o.outDir, i))) {
                std::fprintf(stderr, "mvn-decode: cannot write %s\n", PictureName(o.outDir, i).c_str());
                return 1;
            }
            if (!shown)
                status = 3;
            std::printf("request=%g ret=%d time=%.6f width=%d height=%d\n", request, ret, shown ? pictureTime : -1.0,
                        shown ? width : 0, shown ? height : 0);
            if (o.frames > 0 && ret == -2)
                break;
        }
    }

    if (o.audio) {
        if (!info.has_audio) {
            std::fprintf(stderr, "mvn-decode: %s has no audio\n", o.file.c_str());
            status = 3;
        } else {
            if (pictures)
                decoder.SeekAudio(0);
            std::ofstream out(o.outDir + "/audio.raw", std::ios::binary | std::ios::trunc);
            std::vector<uint8_t> block(1 << 20);
            long long bytes = 0;
            long long samples = 0;
            int ret = 0;
            for (;;) {
                int size = static_cast<int>(block.size());
                int n = 0;
                double time = 0;
                ret = decoder.NextAudio(0, block.data(), &size, &n, &time);
                if (ret != 0 && ret != 4 && ret != 1)
                    break;
                if (ret == 0) {
                    out.write(reinterpret_cast<const char*>(block.data()), size);
                    bytes += size;
                    samples += n;
                }
            }
            if (ret != -2)
                status = 3;
            const char* format = av_get_sample_fmt_name(static_cast<AVSampleFormat>(decoder.OutputSampleFormat()));
            std::printf("audio format=%s channels=%d rate=%d samples=%lld bytes=%lld\n", format ? format : "none",
                        decoder.OutputChannels(), info.sample_rate, samples, bytes);
        }
    }
    decoder.Release();
    return status;
}
