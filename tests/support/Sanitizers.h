#pragma once

// IMAGEOP_SANITIZED is 1 in a program that a sanitizer with an allocator of its own watches, else 0.

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define IMAGEOP_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define IMAGEOP_SANITIZED 1
#endif
#endif
#ifndef IMAGEOP_SANITIZED
#define IMAGEOP_SANITIZED 0
#endif
