// Preloaded into the program: the function that MULTISCENE_HANG names never comes back, as a decoder or an encoder may
// not with a file that somebody has made for that.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#define syncfs declared_otherwise
#include <unistd.h>
#undef syncfs

static void hang_if_named(const char* name) {
    const char* wanted = getenv("MULTISCENE_HANG");
    if (!wanted || strcmp(wanted, name) != 0) return;
    static const char told[] = "hanging\n";
    if (write(STDERR_FILENO, told, sizeof told - 1) < 0) return;
    for (volatile unsigned turn = 0;; ++turn) {
    }
}

// All of these take few arguments, in registers, and give an integer back.
#define HANGING(name)                                                                        \
    long name(long a, long b, long c, long d, long e, long f) {                              \
        hang_if_named(#name);                                                                \
        long (*next)(long, long, long, long, long, long) = 0;                                \
        *(void**)&next = dlsym(RTLD_NEXT, #name);                                            \
        return next(a, b, c, d, e, f);                                                       \
    }

HANGING(jpeg_read_header)     // a photo
HANGING(avformat_open_input)  // a film or a sound
HANGING(avcodec_send_packet)  // its pictures
HANGING(avcodec_send_frame)   // the video that is made
HANGING(inflate)              // an archive
HANGING(plist_from_xml)       // a template
HANGING(curl_easy_perform)    // a server
HANGING(syncfs)               // the disk, when a template has been brought to its place
