#include "audio/FfmpegPtr.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

void FfmpegDeleter::operator()(AVCodecContext* context) const
{
    avcodec_free_context(&context);
}

void FfmpegDeleter::operator()(AVFormatContext* file) const
{
    avformat_close_input(&file);
}

void FfmpegDeleter::operator()(AVFrame* frame) const
{
    av_frame_free(&frame);
}

void FfmpegDeleter::operator()(AVPacket* packet) const
{
    av_packet_free(&packet);
}

void FfmpegDeleter::operator()(SwrContext* context) const
{
    swr_free(&context);
}
