/* Fills a translated template. Placeholders: "%s" or "%1$s" ... "%4$s" take the
   strings in order or by position; "%%" is a percent sign. At most size bytes of
   text are written, then a terminating zero. Returns the number of bytes written. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

int CombineStrings(char* out, int size, const char* format, const char* s1, const char* s2, const char* s3,
                   const char* s4);

#ifdef __cplusplus
}
#endif
