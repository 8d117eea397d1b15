// Describes a media file as FFmpeg reads it, for the export tests to match:
//   media_probe_check FILE [X,Y ...]
// prints
//   container: mov,mp4,m4a,3gp,3g2,mj2 brand=isom
//   video: h264 yuv420p 162x122 frames=6 alpha=no
//   audio: aac channels=2 rate=48000
//   duration: 0.200
//   pixel X,Y: RRGGBBAA        (of the first frame, image rows from the top)
// "video: none" or "audio: none" when the file has no such stream. Exits 1
// with a line on stderr when the file cannot be read.

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/log.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace {

struct Point {
  int x = 0;
  int y = 0;
};

bool alphaMode(const AVStream* stream) {
  const AVDictionaryEntry* tag = av_dict_get(stream->metadata, "alpha_mode", nullptr, 0);
  return tag && std::strcmp(tag->value, "1") == 0;
}

bool formatHasAlpha(int format) {
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
  return descriptor && (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA);
}

int countPackets(AVFormatContext* format, int streamIndex) {
  AVPacket* packet = av_packet_alloc();
  int count = 0;
  while (av_read_frame(format, packet) >= 0) {
    if (packet->stream_index == streamIndex) ++count;
    av_packet_unref(packet);
  }
  av_packet_free(&packet);
  return count;
}

// VP9 keeps its alpha in a side stream that only libvpx's decoder reads.
const AVCodec* decoderFor(const AVStream* stream) {
  if (stream->codecpar->codec_id == AV_CODEC_ID_VP9 && alphaMode(stream)) {
    if (const AVCodec* vpx = avcodec_find_decoder_by_name("libvpx-vp9")) return vpx;
  }
  return avcodec_find_decoder(stream->codecpar->codec_id);
}

AVFrame* firstFrame(AVFormatContext* format, int streamIndex) {
  const AVStream* stream = format->streams[streamIndex];
  AVCodecContext* decoder = avcodec_alloc_context3(decoderFor(stream));
  avcodec_parameters_to_context(decoder, stream->codecpar);
  AVFrame* frame = av_frame_alloc();
  AVPacket* packet = av_packet_alloc();
  bool got = false;
  if (avcodec_open2(decoder, decoderFor(stream), nullptr) == 0) {
    while (!got && av_read_frame(format, packet) >= 0) {
      if (packet->stream_index == streamIndex && avcodec_send_packet(decoder, packet) == 0) {
        got = avcodec_receive_frame(decoder, frame) == 0;
      }
      av_packet_unref(packet);
    }
    if (!got) {
      avcodec_send_packet(decoder, nullptr);
      got = avcodec_receive_frame(decoder, frame) == 0;
    }
  }
  av_packet_free(&packet);
  avcodec_free_context(&decoder);
  if (!got) av_frame_free(&frame);
  return frame;
}

void printPixels(AVFrame* frame, const std::vector<Point>& points) {
  const int w = frame->width;
  const int h = frame->height;
  SwsContext* sws = sws_getContext(w, h, static_cast<AVPixelFormat>(frame->format), w, h, AV_PIX_FMT_RGBA,
                                   SWS_POINT, nullptr, nullptr, nullptr);
  std::vector<std::uint8_t> rgba(static_cast<std::size_t>(w) * h * 4);
  std::uint8_t* planes[1] = {rgba.data()};
  const int strides[1] = {w * 4};
  sws_scale(sws, frame->data, frame->linesize, 0, h, planes, strides);
  sws_freeContext(sws);
  for (const Point& p : points) {
    if (p.x < 0 || p.y < 0 || p.x >= w || p.y >= h) {
      std::printf("pixel %d,%d: outside\n", p.x, p.y);
      continue;
    }
    const std::uint8_t* px = &rgba[(static_cast<std::size_t>(p.y) * w + p.x) * 4];
    std::printf("pixel %d,%d: %02X%02X%02X%02X\n", p.x, p.y, px[0], px[1], px[2], px[3]);
  }
}

void describeVideo(AVFormatContext* format, int index, const std::vector<Point>& points) {
  const AVStream* stream = format->streams[index];
  const AVCodecParameters* par = stream->codecpar;
  const char* pixelFormat = av_get_pix_fmt_name(static_cast<AVPixelFormat>(par->format));
  const bool alpha = formatHasAlpha(par->format) || alphaMode(stream);
  const int frames = countPackets(format, index);
  std::printf("video: %s %s %dx%d frames=%d alpha=%s\n", avcodec_get_name(par->codec_id),
              pixelFormat ? pixelFormat : "unknown", par->width, par->height, frames, alpha ? "yes" : "no");
  if (points.empty()) return;
  av_seek_frame(format, index, 0, AVSEEK_FLAG_BACKWARD);
  if (AVFrame* frame = firstFrame(format, index)) {
    printPixels(frame, points);
    av_frame_free(&frame);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: media_probe_check FILE [X,Y ...]\n");
    return 2;
  }
  std::vector<Point> points;
  for (int i = 2; i < argc; ++i) {
    Point p;
    if (std::sscanf(argv[i], "%d,%d", &p.x, &p.y) == 2) points.push_back(p);
  }
  av_log_set_level(AV_LOG_ERROR);  // libvpx announces its version otherwise
  AVFormatContext* format = nullptr;
  if (avformat_open_input(&format, argv[1], nullptr, nullptr) < 0 || avformat_find_stream_info(format, nullptr) < 0) {
    std::fprintf(stderr, "media_probe_check: %s cannot be read\n", argv[1]);
    return 1;
  }
  const AVDictionaryEntry* brand = av_dict_get(format->metadata, "major_brand", nullptr, 0);
  std::printf("container: %s brand=%s\n", format->iformat->name, brand ? brand->value : "none");
  const int audio = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
  if (audio >= 0) {
    const AVCodecParameters* par = format->streams[audio]->codecpar;
    std::printf("audio: %s channels=%d rate=%d\n", avcodec_get_name(par->codec_id), par->ch_layout.nb_channels,
                par->sample_rate);
  } else {
    std::printf("audio: none\n");
  }
  std::printf("duration: %.3f\n", format->duration > 0 ? double(format->duration) / AV_TIME_BASE : 0.0);
  const int video = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (video >= 0) {
    describeVideo(format, video, points);
  } else {
    std::printf("video: none\n");
  }
  avformat_close_input(&format);
  return 0;
}
