#include "FFmpegDecoder.h"

namespace codec {

FFmpegDecoder::~FFmpegDecoder() = default;

int FFmpegDecoder::Init() { return -1; }
void FFmpegDecoder::Release() {}
int FFmpegDecoder::Seek(double) { return -1; }
int FFmpegDecoder::SeekAudio(double) { return -1; }
int FFmpegDecoder::SeekVideo(double) { return -1; }
int FFmpegDecoder::SeekAudioTo(double) { return -1; }
int FFmpegDecoder::Reserved0() { return -1; }
int FFmpegDecoder::NextFrame(uint8_t*, int*, int*, double*) { return -1; }
int FFmpegDecoder::GetMediaInfo(MediaInfo*) { return -1; }
int FFmpegDecoder::NextAudio(double, uint8_t*, int*, int*, double*) { return -1; }
int FFmpegDecoder::Reserved1() { return -1; }
int FFmpegDecoder::NextVideo(double, uint8_t*, int*, int*, double*) { return -1; }
int FFmpegDecoder::Reserved2() { return -1; }
int FFmpegDecoder::Reserved3() { return -1; }
void FFmpegDecoder::SetThreadCount(int) {}
void FFmpegDecoder::SetThreadType(const char*) {}
int FFmpegDecoder::Reserved4() { return -1; }
int FFmpegDecoder::Reserved5() { return -1; }
int FFmpegDecoder::Reserved6() { return -1; }
int FFmpegDecoder::GetFrameBufferSize() { return 0; }
int FFmpegDecoder::GetOutputWidth() { return 0; }
int FFmpegDecoder::GetOutputHeight() { return 0; }
void FFmpegDecoder::SetAudioSampleFormat(int) {}
void FFmpegDecoder::SetForceResample(bool) {}
void FFmpegDecoder::SetScaleEnabled(bool) {}
void FFmpegDecoder::SetMaxWidth(int) {}
void FFmpegDecoder::SetMaxHeight(int) {}
int FFmpegDecoder::Reserved7() { return -1; }
void FFmpegDecoder::SetUseHardware(bool) {}
int FFmpegDecoder::DumpGop() { return -1; }
int FFmpegDecoder::LoadKeyInfo() { return -1; }
void FFmpegDecoder::_OnPrepareReopen() {}
void FFmpegDecoder::_OnReopen() {}

}  // namespace codec
