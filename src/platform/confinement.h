#pragma once

// AppArmor confinement of this process.

// Non-zero when the process is confined by a profile, 0 when it is not or when
// the kernel has no AppArmor.
int ORBO_aa_has_profile_restricted();

// aa_change_hat(2): enters the sub-profile `hat`, or with a null `hat` returns
// to the parent profile.  `token` must be the same for both.  0 on success, -1
// with `errno` set on failure.  The confinement library is opened on first use,
// since a process that is not confined never needs it.
int ORBO_aa_change_hat(const char* hat, unsigned long token);
