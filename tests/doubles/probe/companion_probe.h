/*
 * companion_probe.h - what the test doubles of the companion libraries saw, and what a test
 * asks them to do.
 *
 * The doubles are opened and closed by the library under test, so they keep nothing of their
 * own: every call they receive is written here, in a library that the test executable links and
 * that therefore outlives them. Usable from C and C++.
 */
#ifndef NQ_COMPANION_PROBE_H
#define NQ_COMPANION_PROBE_H

#ifdef __cplusplus
extern "C" {
#endif

/* Forgets every event, setting, counter, kept copy and log record. */
void nq_probe_reset(void);

/* Events: one line of text per call a double received, in the order received. */
void nq_probe_event(const char* format, ...) __attribute__((format(printf, 1, 2)));
int nq_probe_event_count(void);
/* Valid until the next reset. */
const char* nq_probe_event_at(int index);
/* How many events read exactly `text`. */
int nq_probe_count_events(const char* text);

/* Settings that a test chooses before a double is called; `fallback` when never set. */
void nq_probe_set(const char* key, int value);
int nq_probe_setting(const char* key, int fallback);

/* 1, 2, 3, ... per counter name, across loads and unloads of the doubles. */
int nq_probe_next_number(const char* counter);

/* The last bytes kept under `key` are copied to `destination` (at most `size`). Returns the
 * number of bytes kept, or -1 when nothing was kept under that key. */
void nq_probe_keep_bytes(const char* key, const void* bytes, int size);
int nq_probe_copy_bytes(const char* key, void* destination, int size);

/* Log records, as the logger double received them. Strings are valid until the next reset. */
typedef struct nq_probe_log_record {
    int priority;
    const char* file;
    int line;
    const char* function;
    const char* text;
} nq_probe_log_record;

void nq_probe_add_log_record(int priority, const char* file, int line, const char* function,
                             const char* text);
int nq_probe_log_record_count(void);
nq_probe_log_record nq_probe_log_record_at(int index);

#ifdef __cplusplus
}
#endif

#endif /* NQ_COMPANION_PROBE_H */
