#pragma once

#include <objc/objc.h>

typedef double CGFloat;

struct CGPoint {
  CGFloat x;
  CGFloat y;
};
typedef struct CGPoint CGPoint;

struct CGSize {
  CGFloat width;
  CGFloat height;
};
typedef struct CGSize CGSize;

struct CGRect {
  CGPoint origin;
  CGSize size;
};
typedef struct CGRect CGRect;

typedef unsigned char Boolean;
typedef signed long CFIndex;
typedef unsigned long CFHashCode;
typedef unsigned long CFTypeID;

typedef const void* CFTypeRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFAllocator* CFAllocatorRef;

extern "C" {
extern const CFAllocatorRef kCFAllocatorDefault;

CFTypeID CFBooleanGetTypeID(void);
CFTypeID CFGetTypeID(CFTypeRef cf);
void CFRelease(CFTypeRef cf);
}
