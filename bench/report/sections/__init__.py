"""One module for the results of each benchmark: read(results) makes a Section of its JSON."""
from . import (backlog, call_chain, channels, elements, large_reply, notification, operation_record, request_path,
               sessions, ssl, transport)

READERS = {
    "request_path": request_path.read,
    "operation_record": operation_record.read,
    "large_reply": large_reply.read,
    "call_chain": call_chain.read,
    "span_transport": transport.read,
    "ssl": ssl.read,
    "notification": notification.read,
    "service_backlog": backlog.read_service,
    "agent_backlog": backlog.read_agent,
    "elements": elements.read,
    "sessions": sessions.read,
    "channels": channels.read,
}
