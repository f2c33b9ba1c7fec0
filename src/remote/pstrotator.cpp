#include "remote/pstrotator.h"

#include "core/state.h"
#include "remote/net.h"
#include "remote/remote_services.h"

#include <QtGlobal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int32_t pst_cmd_port = -1;
int32_t pst_rsp_port = -1;

void pst_reset(void)
{
    pst_cmd_port = -1;
    pst_rsp_port = -1;
}

int pst_start(const char *host, const char *protocol, const char *cmd_port, const char *rsp_port, int32_t *socket)
{
    int s = net_init_client(host, cmd_port, protocol);
    if (s < 0)
    {
        if (settings.PstDebug)
        {
            qDebug("[PST] could not initialize service (IP:%s port:%s prot:%s)", host, cmd_port, protocol);
        }
        return -1;
    }
    *socket = s;
    pst_cmd_port = atoi(cmd_port);
    pst_rsp_port = atoi(rsp_port);
    if (settings.PstDebug)
    {
        qDebug("[PST] client (IP:%s port:%s prot:%s) started", host, cmd_port, protocol);
    }
    return 0;
}

int pst_stop(int socket0, int socket1)
{
    if (settings.PstDebug)
    {
        qDebug("[PST] stopping service");
    }
    if (socket0 >= 0)
    {
        net_close(socket0);
    }
    if (socket1 >= 0)
    {
        net_close(socket1);
    }
    pst_cmd_port = -1;
    pst_rsp_port = -1;
    return 0;
}

int pst_split(const char *datagram, int length, char fields[][TEXT_FIELD_SIZE], int max_fields)
{
    char work[PST_DATAGRAM_SIZE + 1];
    int n = length < 0 ? 0 : length > PST_DATAGRAM_SIZE ? PST_DATAGRAM_SIZE : length;
    if (n > 0)
    {
        memcpy(work, datagram, (size_t)n);
    }
    work[n] = 0;
    int max = max_fields < 0 ? 0 : max_fields > PST_FIELDS ? PST_FIELDS : max_fields;
    int starts[PST_FIELDS];
    int tokens = text_tokens(work, n, "\n<>", starts, max);
    // The opening bracket is optional: "PST><AZ?>" parses as "<PST><AZ?>".
    int start = work[0] == '<' ? 1 : 0;
    int count = 0;
    for (int next = 1; next <= tokens && count < max; next++)
    {
        int bytes = next < tokens ? starts[next] - start - 1 : n - start;
        int from = start;
        if (bytes > 0 && work[from] == '<')
        {
            from++;
            bytes--;
        }
        if (bytes > 0)
        {
            text_field_copy(fields[count++], work, from, bytes);
        }
        if (next < tokens)
        {
            start = starts[next];
        }
    }
    if (tokens == 0 && n - start > 0 && max > 0)
    {
        text_field_copy(fields[count++], work, start, n - start);
    }
    return count;
}

static void pst_answer(PstAnswers *answers, const char *format, double value)
{
    if (answers->count >= PST_FIELDS)
    {
        return;
    }
    snprintf(answers->text[answers->count++], PST_ANSWER_SIZE, format, value);
}

int pst_handle(const char *datagram, int length, PstAnswers *answers)
{
    char fields[PST_FIELDS][TEXT_FIELD_SIZE];
    memset(fields, 0, sizeof fields);
    answers->count = 0;
    int count = pst_split(datagram, length, fields, PST_FIELDS);
    if (count < 2 || strcmp(fields[0], "PST") != 0 || count < 3)
    {
        return 0;
    }
    SourceRecord *row = &source_table[SOURCE_PSTROTATOR];
    // The last field is never a command: a well-formed message ends in its
    // closing tag, and a tag at the very end of a message without one is
    // left unserved.
    for (int i = 1; i < count - 1; i++)
    {
        const char *field = fields[i];
        if (strcmp(field, "AZIMUTH") == 0)
        {
            row->az = atof(fields[++i]);
            row->az_tracking_enable = 1;
            if (settings.PstDebug)
            {
                qDebug("[PST] Set AZ: %7.5f", row->az);
            }
        }
        else if (strcmp(field, "ELEVATION") == 0)
        {
            row->el = atof(fields[++i]);
            row->el_tracking_enable = 1;
            if (settings.PstDebug)
            {
                qDebug("[PST] Set EL: %7.5f", row->el);
            }
        }
        else if (strcmp(field, "AZ?") == 0)
        {
            pst_answer(answers, "AZ:%0.1f\r", az_position);
        }
        else if (strcmp(field, "EL?") == 0)
        {
            pst_answer(answers, "EL:%0.1f\r", el_position);
        }
        else if (strcmp(field, "MODE?") == 0 && answers->count < PST_FIELDS)
        {
            snprintf(answers->text[answers->count++], PST_ANSWER_SIZE, "MODE:%d\r", auto_tracking ? 1 : 0);
        }
    }
    return 0;
}

int pst_receive(int socket)
{
    char datagram[PST_DATAGRAM_SIZE + 1];
    struct sockaddr_in sender;
    memset(datagram, 0, sizeof datagram);
    int n = net_recvfrom(socket, datagram, PST_DATAGRAM_SIZE, &sender);
    if (n < 1)
    {
        return 0;
    }
    // PstRotator listens for its answers on a port of its own.
    struct sockaddr_in reply_to;
    net_address_with_port(&sender, pst_rsp_port, &reply_to);
    qDebug("[PST] %s", datagram);

    PstAnswers answers;
    pst_handle(datagram, n, &answers);
    for (int i = 0; i < answers.count; i++)
    {
        // PstRotator reads each answer as one datagram with no terminating zero.
        net_sendto(socket, answers.text[i], (int)strlen(answers.text[i]), &reply_to);
        if (settings.PstDebug)
        {
            qDebug("[PST] %s", answers.text[i]);
        }
    }
    return 0;
}

int pst_poll(int socket0, int socket1)
{
    int sockets[2] = {socket0, socket1};
    uint32_t ready = 0;
    if (net_select(sockets, 2, 1000, &ready) < 1)
    {
        return -1;
    }
    if (socket0 >= 0 && (ready & 1))
    {
        return pst_receive(socket0);
    }
    if (socket1 >= 0 && (ready & 2))
    {
        return pst_receive(socket1);
    }
    return 0;
}

void pst_cycle_step(void)
{
    if (pst_poll(remote_socket[0], remote_socket[1]) != 0)
    {
        return;
    }
    // After a query too: the row's target is handed over on every tick that
    // had a datagram.
    remote_hand_over(SOURCE_PSTROTATOR);
}
