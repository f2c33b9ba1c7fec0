#include "remote/remote_services.h"

#include "core/panel.h"
#include "core/panel_seam.h"
#include "core/state.h"
#include "remote/easycomm.h"
#include "remote/net.h"
#include "remote/pstrotator.h"
#include "remote/rotctl.h"

#include <QtGlobal>
#include <cstring>

char own_address[32];
char remote_adapter_hint[16] = "eth";

void remote_reset(void)
{
    memset(own_address, 0, sizeof own_address);
    text_copy(remote_adapter_hint, sizeof remote_adapter_hint, "eth");
    net_debug = 0;
    rotctl_reset();
    pst_reset();
    easycomm_reset();
}

static void remote_start_gpredict(void)
{
    if (!settings.GpredictActive)
    {
        return;
    }
    net_start();
    remote_socket[0] = rotctl_start(remote_host, rotctl_service, "tcp");
    if (remote_socket[0] >= 0)
    {
        qDebug("Rotator Control active (ipaddr=%s, port=%s, prot=%s)", remote_host, rotctl_service, "tcp");
        gpredict_running = 1;
    }
    if (net_get_ethernet_address(remote_adapter_hint, own_address, sizeof own_address) == 0)
    {
        remote_socket[1] = rotctl_start(own_address, rotctl_service, "tcp");
        if (remote_socket[1] >= 0)
        {
            qDebug("Rotator control active (ipaddr=%s, port=%s, prot=%s)\n", own_address, rotctl_service, "tcp");
            gpredict_running = 1;
        }
    }
    if (gpredict_running)
    {
        panel_status("GPredict is active", 0);
    }
}

static void remote_start_pstrotator(void)
{
    if (!settings.PstActive)
    {
        return;
    }
    net_start();
    if (pst_start(remote_host, settings.Protocol, settings.CmdPort, settings.RspPort, &remote_socket[0]) == 0)
    {
        qDebug("PstRotator Control active (ipaddr=%s, Prot=%s, CmdPort=%s, RspPort=%s)", remote_host, settings.Protocol,
               settings.CmdPort, settings.RspPort);
        pstrotator_running = 1;
    }
    if (net_get_ethernet_address(remote_adapter_hint, own_address, sizeof own_address) == 0 &&
        pst_start(own_address, settings.Protocol, settings.CmdPort, settings.RspPort, &remote_socket[1]) == 0)
    {
        qDebug("PstRotator control active (ipaddr=%s, Prot=%s, CmdPort=%s, RspPort=%s)\n", own_address,
               settings.Protocol, settings.CmdPort, settings.RspPort);
        pstrotator_running = 1;
    }
    if (pstrotator_running)
    {
        panel_status("PstRotator is active", 0);
    }
}

void remote_start(int source)
{
    if (source == SOURCE_EASYCOMM)
    {
        easycomm_start(&easycomm);
        if (easycomm.active)
        {
            panel_status("EasyComm is active", 0);
        }
    }
    else if (source == SOURCE_GPREDICT)
    {
        remote_start_gpredict();
    }
    else if (source == SOURCE_PSTROTATOR)
    {
        remote_start_pstrotator();
    }
}

// Each service closes what it opened; the two share the socket slots, since
// only one of them runs at a time. A service that runs is closed even when its
// Active key was cleared meanwhile, or its sockets would outlive it.
static int remote_close_all(void)
{
    int closed = 0;
    if (easycomm.active)
    {
        easycomm_stop(&easycomm);
        closed |= 1;
    }
    if (gpredict_running)
    {
        for (int i = 0; i < 2; i++)
        {
            if (remote_socket[i] != -1)
            {
                rotctl_stop(remote_socket[i], remote_client[i]);
            }
        }
        net_stop();
        gpredict_running = 0;
        remote_socket[0] = remote_socket[1] = -1;
        remote_client[0] = remote_client[1] = -1;
        closed |= 2;
    }
    if (pstrotator_running)
    {
        pst_stop(remote_socket[0], remote_socket[1]);
        net_stop();
        pstrotator_running = 0;
        remote_socket[0] = remote_socket[1] = -1;
        closed |= 4;
    }
    return closed;
}

void remote_stop(void)
{
    int closed = remote_close_all();
    if (closed & 1)
    {
        panel_status("EasyComm is inactive", 0);
    }
    if (closed & 2)
    {
        panel_status("GPredict is inactive", 0);
    }
    if (closed & 4)
    {
        panel_status("PstRotator is inactive", 0);
    }
}

void remote_hand_over(int source)
{
    if (settings.TrackingSource != source)
    {
        return;
    }
    source_az = source_table[source].az;
    source_el = source_table[source].el;
    panel_show_source_angle(PANEL_SOURCE_AZIMUTH, source_az);
    panel_show_source_angle(PANEL_SOURCE_ELEVATION, source_el);
}

void remote_shutdown(void)
{
    remote_close_all();
}
