// Replies of the devices on the SEI bus. The input's first byte picks a read
// (and the encoder kinds of the position pass), the next seven set an
// encoder's mode, resolution and pulses, and the rest is what the device
// answers. The answer is laid on a pseudo-terminal before the read, padded
// so no read waits out its budget; the short replies have tests of their own.
#include "bus/brt.h"
#include "bus/encoders.h"
#include "bus/position.h"
#include "bus/pty_peer.h"
#include "bus/sei_commands.h"
#include "core/state.h"
#include "fuzz_support.h"

#include <cstdlib>
#include <termios.h>
#include <vector>

static PtyPeer peer = {-1, -1, ""};

static void fuzz_open_bus(void)
{
    if (peer.master >= 0)
    {
        return;
    }
    if (pty_peer_open(&peer) != 0 || bus_open_on(peer.device) != 0)
    {
        fuzz_fail("sei", "no pseudo-terminal for the bus");
    }
}

typedef void (*FuzzRead)(uint8_t mode, uint16_t resolution);

// One read per entry, picked by the input's first byte; the results only
// need somewhere to go.
static uint8_t status, byte_out;
static uint16_t u16_out;
static int16_t s16_out;
static uint32_t u32_out;
static EncoderFactoryInfo info_out;
static const FuzzRead fuzz_reads[16] = {
    [](uint8_t m, uint16_t r) { sei_read_position(0, m, r, &u32_out); },
    [](uint8_t, uint16_t) { sei_read_factory_info(0, &info_out, &byte_out); },
    [](uint8_t, uint16_t) { sei_read_resolution(0, &u16_out, &status); },
    [](uint8_t, uint16_t) { sei_read_mode(0, &byte_out, &status); },
    [](uint8_t, uint16_t) { sei_read_wind_speed(0, &u16_out, &status); },
    [](uint8_t, uint16_t) { sei_read_wind_direction(0, &u16_out, &status); },
    [](uint8_t, uint16_t) { sei_read_thermometer(0, &s16_out, &status); },
    [](uint8_t, uint16_t) { sei_read_barometer(0, &u32_out, &status); },
    [](uint8_t, uint16_t) { sei_read_altimeter(0, &u32_out, &status); },
    [](uint8_t, uint16_t) { sei_read_range(0, &u32_out, &status); },
    [](uint8_t, uint16_t) { sei_read_ppr(0, &u32_out, &byte_out, &status); },
    [](uint8_t, uint16_t) { sei_read_adc(0, 1, &u16_out, &status); },
    [](uint8_t, uint16_t) { sei_read_gpio(0, &byte_out, &status); },
    [](uint8_t m, uint16_t) { brt_read_position(0, m, &u32_out); },
    [](uint8_t, uint16_t) { sei_relay_control(0, 3, 1, &status); },
    // The whole pass from a fresh start: set-up reads, then positions and
    // the corrections.
    [](uint8_t, uint16_t)
    {
        position_reset();
        ReadPosition();
    },
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_setup();
    fuzz_open_bus();
    uint8_t head[8] = {0};
    for (size_t i = 0; i < sizeof head && i < size; i++)
    {
        head[i] = data[i];
    }
    settings.AZ_Addr = 0;
    settings.EL_Addr = 1;
    for (int a = 0; a < 2; a++)
    {
        encoders[a].Type = (head[0] >> (4 + a)) & 1 ? ENCODER_BRT : ENCODER_SEI;
        encoders[a].Mode = head[1];
        encoders[a].Resolution = (uint16_t)(head[2] << 8 | head[3]);
        encoders[a].PPR = (uint32_t)head[4] << 24 | (uint32_t)head[5] << 16 | (uint32_t)head[6] << 8 | head[7];
    }
    size_t from = size < sizeof head ? size : sizeof head;
    size_t length = size - from < 64 ? size - from : 64;
    std::vector<uint8_t> reply(data + from, data + from + length);
    reply.resize(length + 32, 0);
    pty_peer_write(&peer, reply);
    fuzz_reads[head[0] & 15](head[1], encoders[0].Resolution);
    // Whatever the read left unread, and the frames it sent, go before the
    // next input.
    tcflush(peer.slave_keep, TCIFLUSH);
    tcflush(peer.master, TCIFLUSH);
    return 0;
}
