#!/usr/bin/env python3
"""Writes the seeds of fuzz/corpus that are made from the test data or by rule, and the dictionary of messages.

usage: fuzz/make_corpus.py      from anywhere; overwrites its own files and leaves all others alone
"""

import pathlib
import re
import struct
import types

root = pathlib.Path(__file__).resolve().parent
data = root.parent / "tests" / "data"


def source(path):
    return (root.parent / path).read_text()


StreamType = types.SimpleNamespace(**{
    name: int(value)
    for name, value in re.findall(r"uint32_t (\w+) = (\d+);", source("src/vocabulary/StreamType.h"))})
CODECS = {getattr(StreamType, kind): name  # the names that users choose by
          for kind, name in re.findall(r'{StreamType::(\w+), "(\w+)"', source("src/decoders/CodecTable.cpp"))}
TYPES = [0] + [getattr(StreamType, kind)  # as in AudioEvent.h
               for kind in re.findall(r"^    {StreamType::(\w+), ", source("src/decoders/CodecTable.cpp"), re.MULTILINE)]
EVENT_RATES = [8000, 16000, 48000, 44100, 11025, 192000]
DECODER_RATES = [8000, 16000, 48000, 0, 1, 0xFFFFFFFF]  # as in fuzz_decoders.cpp
DECODER_BIT_RATES = [16000, 24000, 32000, 40000, 0, 1]
ADTS_RATES = [96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350]


def write(target, name, content):
    folder = root / "corpus" / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(content)


class Provider:
    """The bytes from which LLVM's FuzzedDataProvider takes given values: texts from the front, numbers from
    the back."""

    def __init__(self):
        self.front = bytearray()
        self.back = bytearray()

    def number(self, value, low, high):
        """ConsumeIntegralInRange(low, high)"""
        count = ((high - low).bit_length() + 7) // 8
        self.back += (value - low).to_bytes(count, "big")
        return self

    def pick(self, value, values):
        """PickValueInArray"""
        return self.number(values.index(value), 0, len(values) - 1)

    def byte(self, value):
        """ConsumeIntegral<std::uint8_t>, and ConsumeBool"""
        self.back.append(value)
        return self

    def text(self, content, longest):
        """ConsumeRandomLengthString"""
        content = content[:longest]
        self.front += content.replace(b"\\", b"\\\\")
        if len(content) < longest:
            self.front += b"\\n"
        return self

    def bytes(self):
        return bytes(self.front + self.back[::-1])


def records(name):
    """The packets of a dump."""
    content = (data / name).read_bytes()
    packets = []
    at = 0
    while at + 4 <= len(content):
        (length,) = struct.unpack_from("<I", content, at)
        packets.append(content[at + 4 : at + 4 + length])
        at += 4 + length
    return packets


def pieces(name, size):
    content = (data / name).read_bytes()
    return [content[at : at + size] for at in range(0, len(content), size)]


def speech_frames(name, sizes={1: 11, 2: 3, 4: 11, 5: 3}):
    """The frames of a G.729 stream, each behind its type."""
    content = (data / name).read_bytes()
    frames = []
    at = 0
    while at < len(content):
        size = sizes.get(content[at], 1)
        frames.append(content[at : at + size])
        at += size
    return frames


def joined(frames, count):
    return [b"".join(frames[at : at + count]) for at in range(0, len(frames), count)]


# stream type, sample rate, channels, bit rate, packing, frames a packet, packets
streams = {
    "mulaw": (StreamType.G711MuLaw, 8000, 1, 0, 0, 1, records("g711/ulaw.rec")),
    "mulaw-stereo": (StreamType.G711MuLaw, 16000, 2, 0, 0, 1, records("g711/ulaw_2ch.rec")),
    "alaw": (StreamType.G711ALaw, 8000, 1, 0, 0, 1, records("g711/alaw.rec")),
    "alaw-stereo": (StreamType.G711ALaw, 16000, 2, 0, 0, 1, records("g711/alaw_2ch.rec")),
    "aac-mono": (StreamType.Aac, 16000, 1, 0, 0, 1, records("aac/mono16k.rec")),
    "aac-stereo": (StreamType.Aac, 48000, 2, 0, 0, 1, records("aac/stereo48k.rec")),
    "amr": (StreamType.AmrNb, 8000, 1, 0, 0, 1, records("amr/amr_mode7.rec")),
    "amr-low": (StreamType.AmrNb, 8000, 1, 0, 0, 1, records("amr/amr_mode0.rec")),
    "g7221-24000": (StreamType.G7221, 16000, 1, 24000, 0, 1, pieces("g7221/speech5_24000.g7221", 60)),
    "g7221-32000": (StreamType.G7221, 16000, 1, 32000, 0, 1, pieces("g7221/mixed_32000.g7221", 80)),
    "g7221-packets": (StreamType.G7221, 16000, 1, 24000, 0, 3, records("g7221/packets.rec")),
    "g7221-odd": (StreamType.G7221, 16000, 1, 24000, 0, 2, records("g7221/oddsizes.rec")),
    "g729": (StreamType.G729A, 8000, 1, 8000, 0, 2, joined(speech_frames("g729a/speech1_dtx1.g729f"), 2)),
    "g729-erased": (StreamType.G729A, 8000, 1, 8000, 0, 1, speech_frames("g729a/erased_heavy.g729f")),
    "g729-noise": (StreamType.G729A, 8000, 1, 8000, 0, 3, joined(speech_frames("g729a/nothing_first.g729f"), 3)),
}
for rate in (16, 24, 32, 40):
    for packing, side in ((1, "left"), (0, "right")):
        streams[f"g726-{rate}-{side}"] = (
            StreamType.G726, 8000, 1, rate * 1000, packing, 1, records(f"g726/random1_{rate}k_{side}.rec"))


def decoder_seeds():
    for name, (kind, rate, channels, bit_rate, packing, frames, packets) in streams.items():
        for room, suffix in ((0, ""), (1, "-room")):
            seed = Provider().pick(rate, DECODER_RATES).byte(channels)
            seed.number(DECODER_BIT_RATES.index(bit_rate) if bit_rate in DECODER_BIT_RATES else 4, 0, 5)
            seed.number(packing, 0, 1)
            for packet in packets[:8]:
                seed.number(frames, 0, 5).text(packet, 1000).number(room, 0, 2)
            write(f"fuzz_decoder_{CODECS[kind]}", name + suffix, seed.bytes())


def stream_start(kind, rate, channels):
    seed = Provider().pick(kind, TYPES)
    if rate in EVENT_RATES:
        seed.number(2, 0, 3).pick(rate, EVENT_RATES)
    elif rate <= 100:
        seed.number(1, 0, 3).number(rate, 0, 100)
    else:
        seed.number(0, 0, 3).number(rate, 0, 0xFFFFFFFF)
    return seed.byte(1).number(channels, 0, 9)


def add_event(seed, packet, frames):
    return seed.byte(255).number(0, 0, 40).number(frames, 0, 5).text(packet, 2000).byte(255)


def event_seeds():
    for name, (kind, rate, channels, _, _, frames, packets) in streams.items():
        seed = stream_start(kind, rate, channels).number(1, 0, 3).pick(48000, [8000, 16000, 44100, 48000])
        seed.number(2, 1, 3)
        for packet in packets[:8]:
            add_event(seed, packet, frames)
        write("fuzz_audioqueue", name, seed.bytes())

        seed = stream_start(kind, rate, channels).number(4, 1, 4)
        for packet in packets[:4]:
            add_event(seed, packet, frames)
        write("fuzz_audioreceived", name, seed.bytes())
    for rate in (0, 1, 19, 49, 50, 51, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF):
        seed = stream_start(StreamType.G711MuLaw, rate, 1).number(4, 1, 4)
        for packet in streams["mulaw"][6][:4]:
            add_event(seed, packet, 1)
        write("fuzz_audioreceived", f"rate-{rate}", seed.bytes())
    for channels in (0, 2, 9):
        seed = stream_start(StreamType.G711ALaw, 8000, channels).number(4, 1, 4)
        for packet in streams["alaw"][6][:4]:
            add_event(seed, packet, 1)
        write("fuzz_audioreceived", f"channels-{channels}", seed.bytes())


def aac_seeds():
    def seed(name, rate, channels, packets):
        content = bytes([ADTS_RATES.index(rate) << 4 | channels])
        for repeats, packet in packets:
            content += bytes([repeats]) + struct.pack("<H", len(packet)) + packet
        write("fuzz_aacframes", name, content)

    mono = streams["aac-mono"][6]
    stereo = streams["aac-stereo"][6]
    seed("mono", 16000, 1, [(0, packet) for packet in mono[:8]])
    seed("stereo", 48000, 2, [(0, packet) for packet in stereo[:8]])
    seed("joined", 16000, 1, [(0, b"".join(mono[at : at + 4])) for at in range(0, 16, 4)])
    seed("mixed", 16000, 1, [(0, mono[2] + stereo[2] + mono[3]), (0, stereo[3]), (0, mono[4])])
    short = bytes.fromhex("fff16040017ffc01182007")  # 1024 samples of silence
    seed("flood", 16000, 1, [(0, mono[1]), (17, short), (0, mono[2])])
    seed("flood-of-frames", 16000, 1, [(12, min(mono, key=len)), (0, mono[2])])
    seed("cut", 16000, 1, [(0, mono[1][:-9]), (0, mono[2] + mono[3][:20]), (0, mono[4])])


def talk_seeds():
    def packet(length=32, stream=StreamType.G711MuLaw, rate=8000, channels=1, body=b""):
        header = b"VDAP" + bytes([1, length, channels, 0]) + struct.pack("<IIIIQ", stream, rate, 640, 0, 123456)
        return header.ljust(length, b"\0") + body

    sound = b"".join(records("g711/ulaw.rec"))[:640]
    write("fuzz_talkpacket", "packet", packet(body=sound))
    write("fuzz_talkpacket", "long-header", packet(length=48, body=sound[:80]))
    write("fuzz_talkpacket", "empty", packet())
    write("fuzz_talkpacket", "alaw", packet(stream=StreamType.G711ALaw, body=sound[:80]))
    write("fuzz_rtpvoice", "g711", bytes([0, 39]) + sound[:480])
    write("fuzz_rtpvoice", "g726", bytes([3, 14]) + sound[:180])
    write("fuzz_rtpvoice", "l16", bytes([5, 79]) + sound)
    frames = (b"\0\x10\x05\x00" + sound[:160]).ljust(201, b"\0")
    write("fuzz_rtpvoice", "aac", bytes([6, 50]) + frames * 2)
    write("fuzz_rtpvoice", "aac-in-parts", bytes([6, 25]) + (b"\0\x10\x05\x00" + sound[:97]) * 2)
    write("fuzz_rtpvoice", "configuration", bytes([0x8D, 20]) + b"\x14\x08" + sound[:100])
    description_head = b"v=0\r\no=- 1 1 IN IP4 10.0.0.5\r\ns=camera\r\nt=0 0\r\na=control:*\r\n"
    heard = b"m=audio 0 RTP/AVP 0\r\na=control:stream=0\r\na=recvonly\r\n"
    for name, lines in {
        "pcmu": b"m=audio 0 RTP/AVP 0\r\n",
        "static-formats": b"m=audio 0 RTP/AVP 8 2 10 11 0\r\n",
        "g726": b"m=audio 0 RTP/AVP 96 97\r\na=rtpmap:96 G726-16/8000\r\na=rtpmap:97 AAL2-G726-40/8000\r\n",
        "l16": b"m=audio 0 RTP/AVP 98\r\na=rtpmap:98 L16/48000/2\r\n",
        "aac": b"m=audio 0 RTP/AVP 97\r\na=rtpmap:97 MPEG4-GENERIC/16000/1\r\na=fmtp:97 streamtype=5;profile-level-id=2;"
               b"mode=AAC-hbr;config=1408;sizelength=13;indexlength=3;indexdeltalength=3\r\n",
        "unknown": b"m=audio 0 RTP/AVP 99\r\na=rtpmap:99 opus/48000/2\r\n",
    }.items():
        write("fuzz_sessiondescription", name, description_head + heard + lines + b"a=control:stream=1\r\na=sendonly\r\n")
    write("fuzz_sessiondescription", "pictures", description_head + b"m=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\n" + heard)
    token = b"0123456789abcdef0123456789abcdef"
    write("fuzz_talkdata", "one", b"<Dest>" + token + b"</Dest>")
    write("fuzz_talkdata", "relayed", b"<Dest>relay/1/" + token + b"</Dest><Dest>" + token + b"</Dest>")
    write("fuzz_talkdata", "unfinished", b"<Dest>" + token + b"<Dest></Dest>")


def cbor(value):
    def head(major, number):
        if number < 24:
            return bytes([major << 5 | number])
        for extra, form in ((24, "B"), (25, ">H"), (26, ">I"), (27, ">Q")):
            if number < 1 << 8 * struct.calcsize(form):
                return bytes([major << 5 | extra]) + struct.pack(form, number)
        raise ValueError(number)

    if value is None:
        return b"\xf7"
    if isinstance(value, bool):
        return b"\xf5" if value else b"\xf4"
    if isinstance(value, int):
        return head(0, value) if value >= 0 else head(1, -1 - value)
    if isinstance(value, float):
        return b"\xfb" + struct.pack(">d", value)
    if isinstance(value, bytes):
        return head(2, len(value)) + value
    if isinstance(value, str):
        return head(3, len(value.encode())) + value.encode()
    if isinstance(value, list):
        return head(4, len(value)) + b"".join(cbor(entry) for entry in value)
    if isinstance(value, tuple):  # a tag and what it is for
        return head(6, value[0]) + cbor(value[1])
    return head(5, len(value)) + b"".join(cbor(key) + cbor(entry) for key, entry in value.items())


def message(kind, number=0, name="", payload=None, code="", text="", secret=""):
    fields = {0: 1, 1: kind}
    for key, value in ((2, number), (3, name), (4, secret), (5, payload), (6, code), (7, text)):
        if value not in (0, "", None):
            fields[key] = value
    return cbor(fields)


def message_seeds():
    device = {"deviceID": 1, "deviceName": "Gate", "ip": "10.0.0.5", "port": 554, "username": "u",
              "password": "p", "bindingCameraList": "camera-1|camera-2"}
    group = {"groupID": 1, "groupName": "Yard", "networkAudioIDList": "1,2"}
    schedule = {"scheduleID": 1, "enableSchedule": True, "scheduleName": "Morning", "scheduleType": 2,
                "scheduleStartTime": "2026-12-01T08:00:00", "scheduleEndTime": "",
                "scheduleSettings": {"weekdays": [1, 2, 3]}, "enableScheduleEndTime": False, "audioID": 1,
                "groupIDList": "1", "networkAudioIDList": ""}
    file = {"audioID": 1, "audioName": "a.wav", "audioLength": 1000, "audioStatus": 2}
    sound = "".join(["/"] * 160)
    event = {"AudioReceived": {"Token": "t", "BitstreamSize": (65536, 120), "Offset": (65536, 0),
                               "AudioData": sound, "StreamType": (65536, StreamType.G711MuLaw),
                               "AudioSamplingFreq": (65536, 8000), "AudioChannelNum": (65536, 1),
                               "FrameNumber": (65536, 1)}}
    types = {"uint": (65536, 7), "longlong": (65537, -7), "ulonglong": (65538, b"18446744073709551615"),
             "list": (65539, ["a", "b"]), "date": (65540, "2026-12-01T08:00:00.000"),
             "url": (65541, "file:///a.wav"), "double": 0.5, "none": None, "bytes": b"\0\1"}
    messages = {
        "login": message(1, name="anna", secret="password"),
        "welcome": message(2),
        "refused": message(3, text="no login"),
        "command": message(4, 1, "AddIPAudio", device),
        "reply": message(5, 1, "StartTalk", {"talkToken": "t", "camId": "camera-1", "relayPath": ""}, "0"),
        "event": message(6, name="TalkDisconnected", payload={"TalkDisconnected": {"Token": "t"}}),
        "types": message(4, 2, "Nothing", types),
    }
    for name, content in messages.items():
        write("fuzz_wiremessage", name, content)

    def session(name, *parts):
        write("fuzz_socketlink", name, b"".join(struct.pack("<H", len(part)) + part for part in parts))

    # The host's own commands have the numbers 1 and 2; 3 to 6 are StartTalkToIPAudio.
    opened = {"talkToken": "t"}
    session("lists", message(5, 1, "RetrieveIPAudioModel", [device], "0"),
            message(5, 2, "GetAudioFile", [file], "0"), message(5, 9, "GetNetworkAudioGroup", [group], "0"),
            message(5, 9, "GetNetworkAudioSchedule", [schedule], "0"))
    session("talk", message(5, 3, "StartTalkToIPAudio", opened, "0"), message(6, name="AudioReceived", payload=event),
            messages["event"])
    session("refusals", message(5, 3, "StartTalkToIPAudio", None, "404", "offline"),
            message(5, 4, "StartTalkToIPAudio", {"error": "offline"}, "0"), messages["refused"])
    session("twice", message(5, 3, "StartTalkToIPAudio", opened, "0"),
            message(5, 3, "StartTalkToIPAudio", opened, "0"), message(5, 3, "UploadFile", None, "-2"))
    session("file-reply-to-talk", message(5, 3, "UploadFile", None, "-2"))
    session("other-names", message(5, 3, "DeleteFile", [], "0"), message(5, 4, "StopTalk", None, "0"),
            message(5, 7, "StartTalkToIPAudio", opened, "0"))
    session("records", message(5, 9, "AddIPAudio", device, "0"), message(5, 9, "UpdateIPAudio", device, "0"),
            message(5, 9, "AddNetworkAudioGroup", group, "0"), message(5, 9, "DeleteIPAudio", 1, "0"),
            message(5, 9, "UpdateNetworkAudioGroup", group, "0"),
            message(5, 9, "AddNetworkAudioSchedule", schedule, "0"))


def chunk(name, content, order="<"):
    return name + struct.pack(order + "I", len(content)) + content + b"\0" * (len(content) % 2)


def wav(rate=16000, channels=1, bits=16, form=1, frames=400, between=b"", size=None):
    block = channels * bits // 8
    fmt = struct.pack("<HHIIHH", form, channels, rate, rate * block, block, bits)
    sound = bytes((i * 7) & 0xFF for i in range(frames * block))
    body = b"WAVE" + chunk(b"fmt ", fmt) + between + chunk(b"data", sound)
    if size is not None:
        at = body.rindex(b"data") + 4
        body = body[:at] + struct.pack("<I", size) + body[at + 4 :]
    return chunk(b"RIFF", body)


def crc(content, width, polynomial):
    value = 0
    for byte in content:
        value ^= byte << width - 8
        for _ in range(8):
            value = value << 1 ^ (polynomial if value >> width - 1 else 0)
            value &= (1 << width) - 1
    return value.to_bytes(width // 8, "big")


def flac(rate=16000):
    """Four frames of 192 samples, 16 bits, mono, each of one value."""
    fields = 192 << 256 | 192 << 240 | rate << 172 | 15 << 164 | 4 * 192 << 128
    content = b"fLaC\x80\0\0\x22" + fields.to_bytes(34, "big")
    for number in range(4):
        head = bytes([0xFF, 0xF8, 0x10, 0x08, number])
        head += crc(head, 8, 0x07)
        frame = head + b"\0" + struct.pack(">h", number * 1000)
        content += frame + crc(frame, 16, 0x8005)
    return content


def sound_seeds():
    files = {
        "mono.wav": wav(),
        "stereo.wav": wav(44100, 2),
        "list.wav": wav(between=chunk(b"LIST", b"INFOabc")),
        "unfinished.wav": wav(size=0xFFFFFFFF),
        "zero.wav": wav(size=0),
        "long.wav": wav(size=0x10000),
        "odd.wav": wav(between=chunk(b"odd ", b"abc")),
    }
    for name, content in files.items():
        write("fuzz_wavheader", name, content[:200])
        write("fuzz_soundfile", name, content)
    write("fuzz_soundfile", "float.wav", wav(48000, 2, 32, 3))
    write("fuzz_soundfile", "mulaw.wav", wav(8000, 1, 8, 7))
    write("fuzz_soundfile", "raw.aac", b"".join(streams["aac-mono"][6][:10]))
    write("fuzz_soundfile", "silence.mp3", (b"\xFF\xFB\x90\x64" + bytes(413)) * 4)
    write("fuzz_soundfile", "constant.flac", flac())
    rate = b"\x40\x0C" + struct.pack(">Q", 16000 << 50)
    write("fuzz_soundfile", "mono.aiff",
          chunk(b"FORM", b"AIFF" + chunk(b"COMM", struct.pack(">hIh", 1, 400, 16) + rate, ">")
                + chunk(b"SSND", bytes(8 + 800), ">"), ">"))


def dump_seeds():
    def dump(packets):
        return b"".join(struct.pack("<I", len(packet)) + packet for packet in packets)

    write("fuzz_packetdump", "aac", dump(streams["aac-mono"][6][:3]))
    write("fuzz_packetdump", "g726", dump(streams["g726-32-left"][6][:3]))
    write("fuzz_packetdump", "empty-packet", dump([b"", b"\0"]))
    write("fuzz_packetdump", "cut", dump([bytes(20)])[:-3])


def text_seeds():
    cheap = "$argon2id$v=19$m=8,t=1,p=1$c2FsdHNhbHRzYWx0c2FsdA$" + "A" * 43
    write("fuzz_userstore", "users", f"anna {cheap}\ntoken {cheap}\n".encode())
    write("fuzz_userstore", "known", f"a {cheap}\n".encode())
    write("fuzz_userstore", "odd", f"a  $argon2i$x\r\n\n\tb c d\nc\n\xe4 {cheap}".encode())
    for name, lines in {
        "once": ["0", "2026-12-01T08:00:00", "", "2026-11-30T00:00:00Z", "Europe/Berlin", "{}"],
        "daily": ["1", "2026-03-01T02:30:00", "2026-04-01T00:00:00", "2026-03-28T12:00:00Z", "Europe/Berlin", ""],
        "weekly": ["2", "2026-10-01T02:30:00", "", "2026-10-24T12:00:00Z", "Europe/Berlin",
                   '{"weekdays":[1,7,"3"]}'],
        "skipped-day": ["1", "2011-12-01T08:30:00", "", "2011-12-29T20:00:00Z", "Pacific/Apia", ""],
    }.items():
        write("fuzz_schedule", name, "\n".join(lines).encode())


def video_seeds():
    """Packets as fuzz_videopackets reads them: flags (1 the last of its picture, 4 after a gap), length, payload."""
    def packet(payload, flags=0):
        return bytes([flags, len(payload)]) + payload

    code = b"\0\0\0\1"
    nals = (root.parent / "tests/data/h264/quadrants.h264").read_bytes().split(code)[1:]
    whole = b"".join(packet(nal, 3 if nal[0] & 31 in (1, 5) else 0) for nal in nals)
    write("fuzz_videopackets", "whole", whole)
    write("fuzz_videopackets", "gap", whole[:300] + packet(nals[4], 7) + whole)
    key = nals[2]
    parts = [key[1:][at:at + 50] for at in range(0, len(key) - 1, 50)]
    fragments = b"".join(packet(bytes([key[0] & 0xE0 | 28, (at == 0) << 7 | (at == len(parts) - 1) << 6 | 5]) + part,
                                3 if at == len(parts) - 1 else 0) for at, part in enumerate(parts))
    sets = b"".join(struct.pack(">H", len(nal)) + nal for nal in nals[:2])
    write("fuzz_videopackets", "fragments", packet(b"\x78" + sets) + fragments + packet(nals[3], 3))
    write("fuzz_videopackets", "endless", packet(b"\x7c\x85" + key, 8) + packet(b"\x7c\x05" + key, 8) * 20)


def camera_seeds():
    def envelope(body, header=""):
        spaces = {"s": "http://www.w3.org/2003/05/soap-envelope", "d": "http://schemas.xmlsoap.org/ws/2005/04/discovery",
                  "tt": "http://www.onvif.org/ver10/schema"}
        names = "".join(f' xmlns:{prefix}="{space}"' for prefix, space in spaces.items())
        return f"<s:Envelope{names}><s:Header>{header}</s:Header><s:Body>{body}</s:Body></s:Envelope>".encode()

    def element(name, *inside, token=""):
        start = f'{name} token="{token}"' if token else name
        return f"<{start}>{''.join(inside)}</{name}>"

    service = element("Service", element("Namespace", "http://www.onvif.org/ver20/media/wsdl"),
                      element("XAddr", "http://192.168.1.64:80/onvif/media2"))
    profile2 = element("Profiles", element("Name", "Main"), element(
        "Configurations", element("VideoEncoder"), element("AudioEncoder", element("Encoding", "PCMU")),
        element("AudioOutput"), element("AudioDecoder")), token="p")
    profile1 = element("Profiles", element("Name", "Main"), element(
        "AudioEncoderConfiguration", element("Encoding", "G711")),
        element("Extension", element("AudioOutputConfiguration"), element("AudioDecoderConfiguration")), token="p")
    rates = element("Items", "8 16")
    for name, body in {
        "time": element("UTCDateTime", element("Time", element("Hour", "8"), element("Minute", "30"), element("Second", "60")),
                        element("Date", element("Year", "2026"), element("Month", "3"), element("Day", "1"))),
        "services": service,
        "capabilities": element("Capabilities", element("Media", element("XAddr", "http://0.0.0.0/media"))),
        "profiles2": profile2,
        "profiles1": profile1,
        "uri": element("Uri", "rtsp://anna:x@192.168.1.64:554/live?a=b"),
        "decoders2": element("Options", element("Encoding", "MP4A-LATM"), element("SampleRateList", rates)),
        "decoders1": element("Options", element("AACDecOptions", element("SampleRateRange", rates)), element("G711DecOptions")),
        "encoders": element("Configurations", element("Encoding", "G726"), element("SampleRate", "8")),
        "deep": "<a>" * 29 + "</a>" * 29,
    }.items():
        write("fuzz_cameraanswer", name, envelope(f"<Response>{body}</Response>"))
    write("fuzz_cameraanswer", "fault", envelope(element("s:Fault", element("s:Code", element("s:Value", "s:Sender"), element(
        "s:Subcode", element("s:Value", "ter:NotAuthorized"))), element("s:Reason", element("s:Text", "no")))))
    write("fuzz_cameraanswer", "entities", b"<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>")

    def match(addresses):
        return element("d:ProbeMatch", element("Address", "urn:uuid:9"), element("d:Types", "dn:NetworkVideoTransmitter"),
                       element("d:Scopes", "onvif://www.onvif.org/name/A%20B onvif://www.onvif.org/location/yard"),
                       element("d:XAddrs", addresses))

    relates = element("RelatesTo", "urn:uuid:1")
    write("fuzz_probeanswer", "own", envelope(element("d:ProbeMatches", match("http://10.0.0.5/onvif")), relates))
    write("fuzz_probeanswer", "elsewhere", envelope(element("d:ProbeMatches", match("http://10.0.0.6/x https://a/x"), match("")), relates))
    write("fuzz_probeanswer", "another", envelope(element("d:ProbeMatches", match("http://10.0.0.5/")), element("RelatesTo", "x")))

    for name, content in {
        "length": "HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabc",
        "end": "HTTP/1.0 500 Oh\n\nabc",
        "chunks": "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3;a=b\r\nabc\r\n0\r\nX: y\r\n\r\n",
        "interim": "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 204 No\r\n\r\n",
        "login": 'HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm="a"\r\nWWW-Authenticate: Digest realm="a\\"b", '
                 'nonce="n", qop="auth", algorithm=SHA-256, opaque="o"\r\nContent-Length: 0\r\n\r\n',
    }.items():
        write("fuzz_httpreply", name, content.encode())


def names_of(files, row):
    """The names in the rows of a table of the protocol, in its order, and one that it does not have."""
    text = "".join((root.parent / "protocol" / name).read_text() for name in files)
    return re.findall(row, text) + ["Nothing"]


def keys_of_words():
    """The keys of Words.h, in its order."""
    text = (root / "Words.h").read_text()
    return re.findall(r"&[VW]::(\w+)", text[text.index("const keys[]") :].split(";")[0])


class Steps(Provider):
    """What VariantTree.h, fuzz_commands and fuzz_replies ask for."""

    commands = names_of(["CommandTable.cpp", "HostCommands.h"], r"[({][VW]::(\w+),\s+(?:nothing|number|text|map)\(")
    events = names_of(["EventTable.cpp"], r"\{V::(\w+),\s+(?:true|false)")
    keys = keys_of_words()

    def tree(self, value, depth=0):
        last = 10 if depth < 4 else 7
        if value is None:
            return self.number(0, 0, last)
        if isinstance(value, bool):
            return self.number(5, 0, last).byte(value)
        if isinstance(value, int) and -2 <= value <= 8:
            return self.number(7, 0, last).byte(1).number(value, -2, 8)
        if isinstance(value, int):
            return self.number(1, 0, last).number(value, -(1 << 31), (1 << 31) - 1)
        if isinstance(value, str):
            return self.number(3, 0, last).text(value.encode(), 40)
        if isinstance(value, bytes):
            return self.number(4, 0, last).text(value, 40)
        if isinstance(value, list):
            self.number(8, 0, last).number(len(value), 0, 5)
            for entry in value:
                self.tree(entry, depth + 1)
            return self
        self.number(10, 0, last).number(len(value), 0, 8)
        for key, entry in value.items():
            self.byte(1).pick(key, self.keys).tree(entry, depth + 1)
        return self

    def command(self, name, payload):
        return self.number(2, 0, 7).pick(name, self.commands).tree(payload)

    def step(self, kind):
        return self.number(0, 0, 15).number(kind, 0, 5)

    def request(self, kind, number=None):
        """A request of a talk, accepted: 3 for an upload, while which nothing happens, 4 for a talk to a device."""
        self.step(2).number(kind, 0, 6)
        if kind == 3:
            return self.number(0, 0, 3).byte(0).number(0, 0, 15).byte(0)
        return self.number(number, -3, 8).number(0, 0, 15)

    def reply(self, code, of, requests, result, name=None):
        """A reply to a request by its place among those so far; signals that it causes start nothing."""
        self.step(4).pick(code, ["0", "-2", "1", ""]).number(1, 0, 3).number(of, 0, requests - 1)
        self.number(0 if name else 1, 0, 3)
        if name:
            self.pick(name, self.commands)
        return self.tree(result).byte(0).byte(0)

    def event(self, name, payload):
        return self.step(0).pick(name, self.events).tree(payload)


def step_seeds():
    device = {"deviceName": "Yard", "ip": "10.0.0.6", "port": 554, "bindingCameraList": "camera-1|camera-2"}
    schedule = {"scheduleName": "Morning", "enableSchedule": True, "scheduleType": 2, "audioID": 1,
                "scheduleStartTime": "2026-12-01T08:00:00", "scheduleSettings": {"weekdays": [1, 2, 3]},
                "networkAudioIDList": "1"}
    records = Steps().command("AddIPAudio", device).command("RetrieveIPAudioModel", None)
    records.command("AddNetworkAudioGroup", {"groupName": "All", "networkAudioIDList": "1,2"})
    records.command("UpdateNetworkAudioGroup", {"groupID": 1, "groupName": "None", "networkAudioIDList": ""})
    records.command("UpdateIPAudio", dict(device, deviceID=2)).command("DeleteIPAudio", 2)
    write("fuzz_commands", "records", records.bytes())
    schedules = Steps().command("AddNetworkAudioSchedule", schedule).command("GetNetworkAudioSchedule", None)
    schedules.command("UpdateNetworkAudioSchedule", dict(schedule, scheduleID=1, scheduleType=0))
    schedules.command("DeleteNetworkAudioSchedule", 1)
    write("fuzz_commands", "schedules", schedules.bytes())
    sound = Steps().command("PlayAudio", {"ipAudioId": 1, "audioFileId": 1, "ipAudioStatus": 1})
    sound.command("PlayGroupAudio", {"groupID": 1, "audioFileId": 1}).command("StopCurrentGroupAudio", 1)
    sound.command("AlarmPlayIPAudio", {"ipAudioId": 1, "audioFileId": 1, "alarmName": "Door"})
    sound.command("StopCurrentAudio", 1).command("GetAudioFile", None).command("DeleteFile", 2)
    sound.command("UploadFile", {"filename": "a.wav", "content": b"UklGRg==", "length": 1000})
    write("fuzz_commands", "sound", sound.bytes())
    talk = Steps().number(0, 0, 7).number(1, 0, 7).number(1, 0, 0xFFFFFFFF)
    talk.text(b"VDAP\1\x20\1\0" + struct.pack("<IIIIQ", StreamType.G711MuLaw, 8000, 0, 0, 5) + bytes(range(80)), 200)
    talk.command("StartTalkToIPAudio", 1).command("StopTalkToIPAudio", 1).command("GetCamera", None)
    write("fuzz_commands", "talk", talk.bytes())
    # Keys that the command does not have get the names of those that it has, in their order.
    camera = {"audioName": "Dock", "deviceName": "simulated", "ip": "10.0.0.8"}
    cameras = Steps().command("AddCamera", camera).number(0, 0, 7).command("UpdateCamera", dict(camera, camId="3"))
    cameras.command("GetCamera", None).command("FindCameras", None).command("AskCamera", {"camId": "3"})
    cameras.command("GetCameraPicture", "3").command("WatchCamera", "3").command("UnwatchCamera", "3").command("DeleteCamera", "3")
    write("fuzz_commands", "cameras", cameras.bytes())

    def start():
        return Steps().number(1, 0, 7)  # a microphone that works

    opened = {"talkToken": "t"}
    talk = start().request(4, 1).reply("0", 0, 1, opened)
    talk.event("AudioReceived", {"AudioReceived": {"Token": "t"}})
    talk.step(1).pick(StreamType.G711MuLaw, [StreamType.G711MuLaw, StreamType.G711ALaw, 0])
    talk.text(bytes(range(100)), 100).number(0, 0, 15)
    talk.event("TalkDisconnected", {"TalkDisconnected": {"Token": "t"}})
    write("fuzz_replies", "talk", talk.bytes())
    write("fuzz_replies", "twice", start().request(4, 1).reply("0", 0, 1, opened).reply("1", 0, 1, None).bytes())
    write("fuzz_replies", "talk-answered-as-file",
          start().request(4, 1).reply("-2", 0, 1, None, "UploadFile").reply("0", 0, 1, opened).bytes())
    upload = start().request(3)
    write("fuzz_replies", "file-answered-as-talk",
          start().request(3).reply("0", 0, 1, opened, "StartTalkToIPAudio").reply("-2", 0, 1, None).bytes())
    write("fuzz_replies", "file-refused", upload.reply("-2", 0, 1, None).reply("0", 0, 1, []).bytes())
    late = start().request(4, 1).number(15, 0, 15).number(1, 0, 7)
    write("fuzz_replies", "late-reply", late.reply("0", 0, 1, opened).bytes())
    lists = start()
    for name, result in (("RetrieveIPAudioModel", [dict(device, deviceID=1), dict(device, deviceID=2)]),
                         ("GetNetworkAudioGroup", [{"groupID": 1, "groupName": "All", "networkAudioIDList": "1,2"}]),
                         ("GetNetworkAudioSchedule", [dict(schedule, scheduleID=1)]),
                         ("UpdateIPAudio", dict(device, deviceID=1)), ("DeleteIPAudio", 2),
                         ("UpdateNetworkAudioGroup", {"groupID": 1, "groupName": "One", "networkAudioIDList": "1"}),
                         ("UpdateNetworkAudioSchedule", dict(schedule, scheduleID=1))):
        lists.step(4).pick("0", ["0", "-2", "1", ""]).pick(name, Steps.commands).byte(0).tree(result).byte(0)
    write("fuzz_replies", "lists", lists.bytes())


def message_words():
    """A dictionary with the words of the protocol, as CBOR has them behind their length."""
    def quoted(content):
        return '"' + "".join(chr(byte) if 32 < byte < 127 else f"\\x{byte:02X}" for byte in content) + '"'

    headers = [root.parent / name for name in ("src/vocabulary/Vocabulary.h", "src/vocabulary/PluginWords.h", "protocol/HostCommands.h", "protocol/Words.h")]
    words = [word for header in headers for word in re.findall(r'QStringLiteral\("([A-Za-z]+)"\)', header.read_text())]
    lines = [f"kind_{kind}=" + quoted(bytes([1, kind])) for kind in range(1, 7)]
    lines += [f"tag_{tag}=" + quoted(b"\xDA" + struct.pack(">I", tag)) for tag in range(65536, 65542)]
    lines += ["undefined=" + quoted(b"\xF7"), "true=" + quoted(b"\xF5"), "double=" + quoted(b"\xFB")]
    lines += [quoted(cbor(word)) for word in words]
    (root / "fuzz_wiremessage.dict").write_text("\n".join(lines) + "\n")


decoder_seeds()
event_seeds()
aac_seeds()
talk_seeds()
message_seeds()
sound_seeds()
dump_seeds()
text_seeds()
video_seeds()
camera_seeds()
step_seeds()
message_words()
