// The shared library's own translation unit; every exported function lives in
// the core archive, which is linked in whole.
