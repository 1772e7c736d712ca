/* SPDX-FileCopyrightText: 2026 Tolm
   SPDX-License-Identifier: AGPL-3.0-only

   Stands in for ALSA's sequencer where the kernel has none: without one, Qtractor stops at an error. Every call
   succeeds, nothing arrives. */
#include <errno.h>
#include <poll.h>
#include <unistd.h>
static int handle;
int snd_seq_open (void** seq, const char* name, int streams, int mode) { (void) name; (void) streams; (void) mode; *seq = &handle; return 0; }
#define SUCCEEDS(name, value) int name () { return value; }
SUCCEEDS (snd_seq_close, 0) SUCCEEDS (snd_seq_client_id, 128) SUCCEEDS (snd_seq_set_client_name, 0)
SUCCEEDS (snd_seq_create_simple_port, 0) SUCCEEDS (snd_seq_delete_simple_port, 0)
SUCCEEDS (snd_seq_alloc_queue, 0) SUCCEEDS (snd_seq_free_queue, 0)
SUCCEEDS (snd_seq_get_port_info, 0) SUCCEEDS (snd_seq_set_port_info, 0)
SUCCEEDS (snd_seq_get_queue_tempo, 0) SUCCEEDS (snd_seq_set_queue_tempo, 0) SUCCEEDS (snd_seq_set_queue_timer, 0)
SUCCEEDS (snd_seq_get_queue_status, 0) SUCCEEDS (snd_seq_control_queue, 0)
SUCCEEDS (snd_seq_event_output, 0) SUCCEEDS (snd_seq_event_output_direct, 0) SUCCEEDS (snd_seq_drain_output, 0)
SUCCEEDS (snd_seq_drop_output, 0) SUCCEEDS (snd_seq_drop_input, 0) SUCCEEDS (snd_seq_remove_events, 0)
SUCCEEDS (snd_seq_event_input, -EAGAIN) SUCCEEDS (snd_seq_event_input_pending, 0)
SUCCEEDS (snd_seq_subscribe_port, 0) SUCCEEDS (snd_seq_unsubscribe_port, 0) SUCCEEDS (snd_seq_query_port_subscribers, -ENOENT)
SUCCEEDS (snd_seq_query_next_client, -ENOENT) SUCCEEDS (snd_seq_query_next_port, -ENOENT)
SUCCEEDS (snd_seq_get_any_client_info, -ENOENT) SUCCEEDS (snd_seq_get_any_port_info, -ENOENT)
SUCCEEDS (snd_seq_poll_descriptors_count, 1)
int snd_seq_poll_descriptors (void* seq, struct pollfd* fds, unsigned space, short events)
{
    static int ends[2];
    (void) seq; (void) space;
    if (ends[0] == 0 && pipe (ends) != 0) return 0;
    *fds = (struct pollfd) { ends[0], events, 0 };
    return 1;
}
