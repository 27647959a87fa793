// libav and its codecs are not instrumented, and hand memory between their own threads by atomics that the sanitizer
// does not see. Every queue, lock and hand-over of ours stays under its eyes.
#ifdef __SANITIZE_THREAD__
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
    return "called_from_lib:libavcodec.so\n"
           "called_from_lib:libavformat.so\n"
           "called_from_lib:libavutil.so\n"
           "called_from_lib:libswresample.so\n"
           "called_from_lib:libswscale.so\n"
           "called_from_lib:libx264.so\n";
}
#endif
