// Machine queries: processor count, page size, a monotonic clock.
#pragma once

// Number of online processors, at least 1. Asked afresh on every call.
int get_processor_count();

// Page size in bytes, at least 512. The raw value is cached on first use.
int get_page_size();

// Seconds of a high-resolution monotonic clock with an arbitrary origin.
double get_time_seconds();
