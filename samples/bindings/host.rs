// A host in Rust: both calls, guarded. Build it for 64-bit Windows, with ProductServicesGuard.dll in its folder:
//
//     rustc -L LIB host.rs       (LIB is the folder lib of the package)
//
// The declarations are those of guarded_calls.h and publisher.h, which describe them.
#![allow(non_snake_case, dead_code)]

use std::sync::atomic::AtomicU32;
use std::thread;

const OUTCOME_NEWER_RELEASE: u32 = 1;
const OUTCOME_UP_TO_DATE: u32 = 2;
const OUTCOME_BROWSER_OPENED: u32 = 3;
const OUTCOME_USER_QUIT: u32 = 4;
const OUTCOME_UNREACHABLE: u32 = 9;
const OUTCOME_TIMED_OUT: u32 = 10;
const OUTCOME_CANCELLED: u32 = 11;
const OUTCOME_UNTRUSTED_CERTIFICATE: u32 = 12;
const OUTCOME_UNTRUSTED_ADDRESS: u32 = 13;
const OPTION_QUIET: u32 = 1;
const OPTION_SYSTEM_PROXY: u32 = 8;
const PUBLISHER_TRUSTED: u32 = 100;
const LANGUAGE_EN: i32 = 120;

#[repr(C)]
struct GuardedCallParams {
    size: u32,
    languageId: i32,
    productName: *const u16,
    productVersion: *const u16,
    apiKey: *const u16,
    trustedHosts: *const u16,
    options: u32,
    timeLimitMs: u32,
    cancelFlag: *const AtomicU32,
    resultText: *mut u16,
    resultTextCapacity: u32,
    resultCode: u32,
    isTextTruncated: u32,
    reserved: u32,
}

#[link(name = "ProductServicesGuard")]
extern "C" {
    fn GuardedCheckForUpdates(params: *mut GuardedCallParams) -> u32;
    fn GuardedUpgrade(params: *mut GuardedCallParams) -> u32;
    fn VerifyPublisher(path: *const u16, publisher: *const u16, text: *mut u16, textCapacity: u32) -> u32;
}

static IS_ENDING: AtomicU32 = AtomicU32::new(0);

fn utf16(text: &str) -> Vec<u16> {
    text.encode_utf16().chain([0]).collect()
}

fn call(function: unsafe extern "C" fn(*mut GuardedCallParams) -> u32, options: u32) -> String {
    let (name, version) = (utf16("Example Draft"), utf16("2026.1"));
    let (key, hosts) = (utf16("draft20-7k2m9q-x4v8p1w"), utf16("localhost:18443"));
    let mut text = vec![0u16; 4096];
    let mut params = GuardedCallParams {
        size: std::mem::size_of::<GuardedCallParams>() as u32, languageId: LANGUAGE_EN,
        productName: name.as_ptr(), productVersion: version.as_ptr(), apiKey: key.as_ptr(),
        trustedHosts: hosts.as_ptr(), options: options | OPTION_SYSTEM_PROXY, timeLimitMs: 15000,
        cancelFlag: &IS_ENDING, resultText: text.as_mut_ptr(), resultTextCapacity: text.len() as u32,
        resultCode: 0, isTextTruncated: 0, reserved: 0,
    };
    let outcome = unsafe { function(&mut params) };
    let end = text.iter().position(|&unit| unit == 0).unwrap_or(text.len());
    describe(outcome, &String::from_utf16_lossy(&text[..end]))
}

fn describe(outcome: u32, text: &str) -> String {
    match outcome {
        // The URL is https and on a trusted host, so it may be opened.
        OUTCOME_NEWER_RELEASE => format!("a newer release is at {text}"),
        OUTCOME_UP_TO_DATE => "up to date".into(),
        OUTCOME_BROWSER_OPENED => "the browser shows the purchase page".into(),
        OUTCOME_USER_QUIT => "left by the user".into(),
        OUTCOME_UNTRUSTED_CERTIFICATE | OUTCOME_UNTRUSTED_ADDRESS => {
            format!("not secure, ask your administrator: {text}")
        }
        OUTCOME_UNREACHABLE | OUTCOME_TIMED_OUT => format!("no connection, try again later: {text}"),
        OUTCOME_CANCELLED => "cancelled".into(),
        _ => format!("failed with outcome {outcome}: {text}"),
    }
}

fn main() {
    let worker = thread::spawn(|| call(GuardedCheckForUpdates, OPTION_QUIET));
    // The host's window is open here. When it is closed, IS_ENDING.store(1, Ordering::Relaxed) ends a check that is
    // still running.
    println!("CheckForUpdates: {}", worker.join().unwrap());

    println!("Upgrade: {}", call(GuardedUpgrade, 0)); // on the thread that shows the host's windows
}
